#pragma once

#include "check/lint.h"
#include "tev2_loader/walk.h"
#include "text/message_text.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The checks of tv2 check, in groups. Each group has a file of its own, which states its codes and raises them.

namespace tev2_check
{

/// Collects what the groups find.
class Findings
{
public:
    std::vector<Finding> all;

    /// About a field.
    void Add(const CheckCode& code, const TEV2_LOADER::TEV2_FIELD& field, std::uint64_t offset,
             std::string message)
    {
        Add(code, field, offset, field.Path(), std::move(message));
    }

    /// About the record that a field is of.
    void AddForRecord(const CheckCode& code, const TEV2_LOADER::TEV2_FIELD& field, std::string message)
    {
        AddForPath(code, field, field.record, std::move(message));
    }

    /// About more than the field where it is.
    void AddForPath(const CheckCode& code, const TEV2_LOADER::TEV2_FIELD& field, std::string path,
                    std::string message)
    {
        Add(code, field, field.offset, std::move(path), std::move(message));
    }

    void AddForChunk(const CheckCode& code, const TEV2_LOADER::TEV2_CHUNK_SPAN& chunk, std::uint64_t offset,
                     std::string path, std::string message);

    /// About the whole file.
    void AddForFile(const CheckCode& code, std::uint64_t offset, std::string message);

    /// About one of many numbers, texts or records: the first that is called for a code and a path becomes a finding,
    /// the others are counted in it. make_message() is called for the first alone.
    template <typename MakeMessage>
    void AddOnce(const CheckCode& code, const TEV2_LOADER::TEV2_FIELD& field, const std::string& path,
                 const MakeMessage& make_message)
    {
        const auto last = last_.find(code.code);
        if (last != last_.end() && all[last->second].path == path)
        {
            ++all[last->second].more;
            return;
        }
        last_[code.code] = all.size();
        AddForPath(code, field, path, make_message());
    }

private:
    void Add(const CheckCode& code, const TEV2_LOADER::TEV2_FIELD& field, std::uint64_t offset,
             std::string path, std::string message);

    std::map<std::string_view, std::size_t> last_; ///< finding of AddOnce, by its code
};

/// Sees every field of a file, in the order of WalkScene; what it finds goes into the findings that it was made with.
class LintGroup : public TEV2_LOADER::TEV2_FIELD_VISITOR
{
public:
    /// After the last field.
    virtual void Finish() {}
};

/// A group, and the codes that it raises.
struct LintGroupRow
{
    std::span<const CheckCode> codes;
    std::unique_ptr<LintGroup> (*make)(const LoadedFile& file, const CheckOptions& options,
                                       Findings& findings);
};

LintGroupRow FileLint();     ///< chunks, lengths, texts
LintGroupRow TrackLint();    ///< hierarchy, tracks, numbers
LintGroupRow ObjectLint();   ///< indices, instances, splines
LintGroupRow MaterialLint(); ///< lights, materials, maps
LintGroupRow MeshLint();     ///< meshes
LintGroupRow LikeLint();     ///< whether it fits a rig

inline std::string QuotedName(const TEV2_LOADER::TEV2_WIDE_STRING& name)
{
    return Quoted(ReadableText(name.Text()));
}

/// "material 7, but there are 2 materials"
std::string BeyondText(std::string_view singular, std::string_view plural, std::int64_t index,
                       std::size_t count);

/// The index that follows `list` at the front of `path`; none when the path begins otherwise.
std::optional<std::size_t> IndexBehind(std::string_view list, std::string_view path);

} // namespace tev2_check
