#pragma once

#include "tev2_loader/requirements.h"

#include <string>
#include <utility>

namespace TEV2_LOADER
{

/// Whether an operation succeeded and, when it did not, why: a sentence part in UTF-8 that a person can act on.
///
///     const auto check = [](const std::string& name)
///     { return name.empty() ? Status::Failure("the name is empty") : Status(); };
///
///     if (const Status checked = check("walk"); !checked)
///         std::fprintf(stderr, "cannot rename: %s\n", checked.Reason().c_str());
///
/// The compiler warns when a Status is ignored.
class [[nodiscard]] Status
{
public:
    /// Success.
    Status() = default;

    /// Failure, also when the reason is empty.
    static Status Failure(std::string reason)
    {
        Status status;
        status.ok_ = false;
        status.reason_ = std::move(reason);
        return status;
    }

    /// Success for 0, otherwise failure with the system's words for an errno value.
    static Status FromErrno(int error);

    bool Ok() const { return ok_; }
    explicit operator bool() const { return ok_; }

    /// Empty on success.
    const std::string& Reason() const { return reason_; }

private:
    bool ok_ = true;
    std::string reason_;
};

} // namespace TEV2_LOADER
