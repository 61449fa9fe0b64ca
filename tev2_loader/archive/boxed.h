#pragma once

#include "tev2_loader/requirements.h"

#include <memory>

namespace TEV2_LOADER
{

/// A large member of a small object: takes one pointer until it is first written to, and reads as an empty value until
/// then. Reading through a const box never allocates. Moves as a pointer does and leaves an empty box.
///
///     #include "tev2_loader/records/meshes.h"
///
///     TEV2_RIGID mesh;
///     mesh.vertices->positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
template <typename Value>
class TEV2_BOXED
{
public:
    Value& operator*()
    {
        if (!value_)
            value_ = std::make_unique<Value>();
        return *value_;
    }
    const Value& operator*() const
    {
        static const Value kEmpty{};
        return value_ ? *value_ : kEmpty;
    }
    Value* operator->() { return &**this; }
    const Value* operator->() const { return &**this; }

    /// Whether nothing has been written to it.
    bool Empty() const { return !value_; }

private:
    std::unique_ptr<Value> value_;
};

} // namespace TEV2_LOADER
