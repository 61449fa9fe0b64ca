#include "tev2_loader/tev2.h"

#include "tev2_loader/array_length_helper.h"
#include "tev2_loader/detail/scene_reader.h"
#include "tev2_loader/io/utf8.h"
#include "tev2_loader/records/archives.h"

#include <algorithm>
#include <string>
#include <type_traits>
#include <utility>

namespace TEV2_LOADER
{

namespace
{

/// Writes the chunk of a record. If there are numbers between id and body, these and the id count in the result.
template <typename Record, typename... Prefix>
bool SaveChunk(TEV2_FILE_WRITER& writer, const Record& record, Prefix... prefix)
{
    writer.BeginChunk();
    bool saved = writer.WriteU32(record.GetChunkId()) || sizeof...(prefix) == 0;
    ((saved &= writer.WriteU32(prefix)), ...);
    saved &= record.Save(writer);
    writer.EndChunk();
    return saved;
}

template <typename List, typename Record>
bool SaveListed(TEV2_FILE_WRITER& writer, const List& list, const Record& record)
{
    if constexpr (requires { list.index; })
        return SaveChunk(writer, record, list.index);
    else if constexpr (requires { record.GetType(); })
        return SaveChunk(writer, record, record.GetType());
    else
        return SaveChunk(writer, record);
}

/// Calls use(object, index) for a record, for an object that may be null, or for each such object of an array.
template <typename Member, typename Use>
void ForEachAt(Member& member, const Use& use, std::size_t index = RecordScope::kNoIndex)
{
    if constexpr (requires { member.begin(); })
    {
        for (std::size_t at = 0; at < member.size(); ++at)
            ForEachAt(member[at], use, at);
    }
    else if constexpr (requires { *member; })
    {
        if (member)
            use(*member, index);
    }
    else
    {
        use(member, index);
    }
}

/// The same without the index.
template <typename Member, typename Use>
void ForEach(Member& member, const Use& use)
{
    ForEachAt(member, [&use](auto& object, std::size_t) { use(object); });
}

/// How messages name an object: lights[2] "Sun".
template <typename Record>
std::string TitleOf(std::string path, const Record& record)
{
    if constexpr (std::derived_from<Record, TEV2_ENTITY>)
        if (!record.name.Text().empty())
            path += " \"" + ReadableText(record.name.Text()) + "\"";
    return path;
}

template <typename Record>
void ReportIgnored(TEV2_SAVE_REPORT& report, const std::string& path, const Record& record)
{
    VisitAsClass(record,
                 [&](const auto& concrete)
                 {
                     if (HasUnsavedValues(concrete))
                         report.ignored.push_back(TitleOf(path, record));
                 });
}

template <typename Record>
void ReportSaved(TEV2_SAVE_REPORT& report, const TEV2_FILE_WRITER::Refusal& refusal, const std::string& path,
                 const Record& record)
{
    if (!refusal.reason.empty() && report.refused.empty())
        report.refused = TitleOf(path, record) + ", " + refusal.field + ": " + refusal.reason;
    if constexpr (requires { record.IsTyped(); })
        ReportIgnored(report, path, record);
    else if constexpr (std::same_as<Record, TEV2_ENVIRONMENT>)
        if (record.environmentMap)
            ReportIgnored(report, path + ".environmentMap", *record.environmentMap);
}

/// Writes all objects of a list; false when one of them was not saved.
template <typename List, typename Member>
bool SaveList(TEV2_FILE_WRITER& writer, const List& list, const Member& member, TEV2_SAVE_REPORT* report)
{
    bool saved = true;
    ForEachAt(member,
              [&](const auto& record, std::size_t index)
              {
                  writer.refusal = {};
                  saved &= SaveListed(writer, list, record);
                  if (report != nullptr)
                      ReportSaved(*report, writer.refusal,
                                  index == RecordScope::kNoIndex ? list.label : PathOf(list, index), record);
              });
    return saved;
}

} // namespace

bool TEV2::Save(TEV2_FILE_WRITER& writer, TEV2_SAVE_REPORT* report) const
{
    if (report != nullptr)
        *report = {};
    TEV2_FILE_STREAM& stream = *writer.stream;
    const std::int32_t magicPosition = stream.Tell();
    const std::uint32_t unfinished = 0;
    stream.Write(&unfinished, sizeof unfinished);

    bool saved = true;
    VisitListsBy<&TEV2_LIST::save>(*this,
                                   [&](const auto& list, const auto& member)
                                   {
                                       saved &= SaveList(writer, list, member, report);
                                       if (list.kind == kInformationChunk)
                                           saved &= SaveChunk(writer, TEV2_ARRAY_LENGTH_HELPER(*this));
                                   });

    // Errors of buffered writes show only now. A file that lost anything stays without its magic.
    stream.Flush();
    if (stream.lastError == 0)
    {
        stream.Seek(magicPosition);
        stream.Write(&kMagic, sizeof kMagic);
    }
    return saved && magicPosition <= 0 && !stream.Appends();
}

bool TEV2::Load(TEV2_MEMORY_CURSOR& cursor, bool applyStartTime)
{
    Clear();
    if (!TEV2_SCENE_READER(*this).Read(cursor) || !AfterLoad(cursor))
        return false;
    if (applyStartTime)
        SetTime(environment.timeRange.minimum);
    return true;
}

bool TEV2::AfterLoad(TEV2_MEMORY_CURSOR& cursor)
{
    if (weightedMeshes.empty())
        return true;
    if (!cursor.TakeMemory(matrixHierarchy.nodes.size() * sizeof(TEV2_MATRIX_3X4)))
        return false;
    matrixHierarchy.SetTime(environment.timeRange.minimum);
    inverseBindMatrices.reserve(matrixHierarchy.nodes.size());
    for (const TEV2_MATRIX_NODE& node : matrixHierarchy.nodes)
        inverseBindMatrices.push_back(Inverse(node.worldMatrix));
    return true;
}

void TEV2::Clear()
{
    // Arrays give their memory back, too: the next load counts what it takes.
    VisitLists(*this, [](const TEV2_LIST&, auto& member) { member = std::decay_t<decltype(member)>(); });
    inverseBindMatrices = {};
}

bool TEV2::HasKeptBodies() const
{
    bool kept = environment.environmentMap && !environment.environmentMap->IsTyped();
    ForEach(cameras, [&kept](const TEV2_CAMERA& camera) { kept = kept || camera.keptEffects.count != 0; });
    VisitLists(*this,
               [&kept](const auto&, const auto& member)
               {
                   ForEach(member,
                           [&kept](const auto& record)
                           {
                               if constexpr (requires { record.IsTyped(); })
                                   kept = kept || !record.IsTyped();
                           });
               });
    return kept;
}

void TEV2::BindMeshes()
{
    ForEach(weightedMeshes,
            [this](TEV2_WEIGHTED_MESH& mesh) { mesh.Bind(matrixHierarchy, inverseBindMatrices); });
}

void TEV2::Update(float delta_time)
{
    VisitListsBy<&TEV2_LIST::update>(*this,
                                     [&](const TEV2_LIST& list, auto& member)
                                     {
                                         ForEach(member, [delta_time](TEV2_INTERNAL_ANIM_OBJECT& object)
                                                 { object.Update(delta_time); });
                                         if (list.kind == kBezierSplineChunk)
                                             BindMeshes();
                                     });
}

void TEV2::SetTime(float time)
{
    VisitListsBy<&TEV2_LIST::setTime>(*this,
                                      [&](const TEV2_LIST& list, auto& member)
                                      {
                                          ForEach(member, [time](TEV2_INTERNAL_ANIM_OBJECT& object)
                                                  { object.SetTime(time); });
                                          if (list.kind == kBezierSplineChunk)
                                              BindMeshes();
                                      });
}

std::string PathOf(const TEV2_LIST& list, std::size_t index)
{
    return list.label + ("[" + std::to_string(index) + "]");
}

std::string PathOf(const TEV2_INSTANCE_LIST& list, std::size_t index)
{
    return PathOf(static_cast<const TEV2_LIST&>(list), list.index) + "[" + std::to_string(index) + "]";
}

const TEV2_KIND* FindChunkKind(std::uint32_t id)
{
    if (id == kArrayLengthsChunk)
        return &kArrayLengthsChunk;
    const TEV2_KIND* found = TEV2_INSTANCE::FindKind(id);
    const auto compare = [&](const TEV2_LIST& list) { found = list.kind == id ? &list.kind : found; };
    std::apply([&](const auto&... list) { (compare(list), ...); }, kSceneLists);
    return found;
}

std::string ChunkTitle(std::uint32_t id)
{
    const TEV2_KIND* const kind = FindChunkKind(id);
    return kind != nullptr ? kind->title : "unknown chunk " + std::to_string(id);
}

} // namespace TEV2_LOADER
