#include "check/lint.h"

#include "check/lint_group.h"
#include "text/message_text.h"

#include <algorithm>
#include <charconv>

namespace tev2_check
{

using namespace TEV2_LOADER;

namespace
{

Finding FromLoader(const TEV2_LOAD_FINDING& loader)
{
    Finding finding;
    finding.code = CodeName(loader.code);
    finding.severity = loader.severity == TEV2_LOAD_SEVERITY::Error ? Severity::Error : Severity::Warning;
    finding.offset = loader.offset;
    if (loader.chunkId != TEV2_LOAD_FINDING::kNoChunk)
    {
        finding.chunk_id = loader.chunkId;
        finding.chunk_offset = loader.chunkOffset;
    }
    finding.path = loader.path;
    finding.message = "expected " + loader.expected + ", found " + loader.found;
    return finding;
}

/// The name of the object, or of the node, that a record path leads to or into; empty for other paths.
std::string NameAt(const TEV2& scene, std::string_view path)
{
    const auto& nodes = scene.matrixHierarchy.nodes;
    if (const auto node = IndexBehind("matrixHierarchy.nodes[", path); node && *node < nodes.size())
        return ReadableText(nodes[*node].name.Text());
    std::string name;
    VisitLists(scene,
               [&]<typename Member>(const auto& list, const Member& member)
               {
                   if constexpr (requires { member[0]->name; })
                   {
                       if (!path.starts_with(list.label))
                           return;
                       std::string front = std::string(list.label) + '[';
                       if constexpr (requires { list.index; })
                           front += std::to_string(list.index) + "][";
                       const auto index = IndexBehind(front, path);
                       if (index && *index < member.size() && member[*index])
                           name = ReadableText(member[*index]->name.Text());
                   }
               });
    return name;
}

constexpr LintGroupRow (*kGroups[])() = {FileLint, TrackLint, ObjectLint, MaterialLint, MeshLint, LikeLint};

/// Hands every field to every group.
class AllGroups : public TEV2_FIELD_VISITOR
{
public:
    std::vector<std::unique_ptr<LintGroup>> groups;

    void Number(const TEV2_FIELD& field, double number) override
    {
        for (const auto& group : groups)
            group->Number(field, number);
    }
    void Text(const TEV2_FIELD& field, const TEV2_WIDE_STRING& text) override
    {
        for (const auto& group : groups)
            group->Text(field, text);
    }
    void Track(const TEV2_FIELD& field, const TEV2_ANIMATABLE* track) override
    {
        for (const auto& group : groups)
            group->Track(field, track);
    }
};

} // namespace

void Findings::AddForChunk(const CheckCode& code, const TEV2_CHUNK_SPAN& chunk, std::uint64_t offset,
                           std::string path, std::string message)
{
    all.push_back({std::string(code.code), code.severity, offset, chunk.id, chunk.offset, std::move(path),
                   std::move(message)});
}

void Findings::AddForFile(const CheckCode& code, std::uint64_t offset, std::string message)
{
    all.push_back({std::string(code.code), code.severity, offset, std::nullopt, 0, "", std::move(message)});
}

void Findings::Add(const CheckCode& code, const TEV2_FIELD& field, std::uint64_t offset, std::string path,
                   std::string message)
{
    all.push_back({std::string(code.code), code.severity, offset, field.chunkId, field.chunkOffset,
                   std::move(path), std::move(message)});
}

std::string BeyondText(std::string_view singular, std::string_view plural, std::int64_t index,
                       std::size_t count)
{
    return std::string(singular) + ' ' + std::to_string(index) +
           (count == 1 ? ", but there is " : ", but there are ") + CountOf(count, singular, plural);
}

std::optional<std::size_t> IndexBehind(std::string_view list, std::string_view path)
{
    std::size_t index = 0;
    if (!path.starts_with(list) ||
        std::from_chars(path.data() + list.size(), path.data() + path.size(), index).ec != std::errc())
        return std::nullopt;
    return index;
}

std::string FindingText(const Finding& finding)
{
    std::string text = std::string(SeverityName(finding.severity)) + ' ' + finding.code + " at byte " +
                       std::to_string(finding.offset);
    if (!finding.path.empty())
        text += ", " + finding.path + (finding.name.empty() ? "" : ' ' + Quoted(finding.name));
    else if (finding.chunk_id)
        text += ", chunk " + std::to_string(*finding.chunk_id) + " (" + ChunkTitle(*finding.chunk_id) + ")";
    return text + ": " + finding.message;
}

std::vector<CheckCode> LintCodes()
{
    std::vector<CheckCode> codes;
    for (const auto& group : kGroups)
        for (const CheckCode& code : group().codes)
            codes.push_back(code);
    return codes;
}

std::vector<Finding> Examine(const LoadedFile& file, const CheckOptions& options)
{
    Findings findings;
    for (const TEV2_LOAD_FINDING& loader : file.report.findings)
        findings.all.push_back(FromLoader(loader));
    if (file.loaded)
    {
        AllGroups groups;
        for (const auto& group : kGroups)
            groups.groups.push_back(group().make(file, options, findings));
        WalkScene(*file.scene, file.image.data(), file.report, groups);
        for (const auto& group : groups.groups)
            group->Finish();
    }
    for (Finding& finding : findings.all)
    {
        finding.name = NameAt(*file.scene, finding.path);
        if (finding.more > 0)
            finding.message += ", and " + CountText(finding.more) + " more";
    }
    std::stable_sort(findings.all.begin(), findings.all.end(),
                     [](const Finding& left, const Finding& right) { return left.offset < right.offset; });
    return std::move(findings.all);
}

} // namespace tev2_check
