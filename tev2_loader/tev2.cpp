#include "tev2_loader/tev2.h"

#include "tev2_loader/array_length_helper.h"
#include "tev2_loader/io/utf8.h"
#include "tev2_loader/records/archives.h"

#include <algorithm>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

namespace TEV2_LOADER
{

namespace
{

/// Bytes that an object takes at most, whichever class of its family it is.
template <typename Object>
constexpr std::size_t MostBytes()
{
    if constexpr (requires(const Object& object) { ClassesOf(object); })
        return decltype(ClassesOf(std::declval<const Object&>()))::kLargest;
    else
        return sizeof(Object);
}

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

/// The number between id and body.
bool ReadPrefix(TEV2_MEMORY_CURSOR& cursor, std::uint32_t& prefix)
{
    const auto present = cursor.chunkEnd - cursor.current;
    if (present < static_cast<std::ptrdiff_t>(sizeof prefix))
        return cursor.Fail(TEV2_LOAD_CODE::ChunkTooSmall, "4 bytes", std::to_string(present) + " bytes");
    prefix = cursor.ReadU32();
    return true;
}

template <typename Record>
bool LoadMember(TEV2_MEMORY_CURSOR& cursor, float version, const TEV2_LIST& list, Record& record)
{
    const RecordScope scope(cursor, list.label);
    return record.Load(cursor, version);
}

template <typename Object>
bool LoadMember(TEV2_MEMORY_CURSOR& cursor, float version, const TEV2_LIST& list,
                std::unique_ptr<Object>& object)
{
    auto read = std::make_unique<Object>();
    if (list.reading == TEV2_READING::WhenLoaded)
    {
        const bool loaded = LoadMember(cursor, version, list, *read);
        if (loaded)
            object = std::move(read);
        return loaded;
    }
    object = std::move(read);
    return LoadMember(cursor, version, list, *object);
}

template <typename Object>
bool LoadMember(TEV2_MEMORY_CURSOR& cursor, float version, const TEV2_LIST& list, TEV2::Array<Object>& array)
{
    static_assert(MostBytes<Object>() <= kMostObjectBytes);
    const RecordScope scope(cursor, list.label, array.size());
    [[maybe_unused]] std::uint32_t type = 0;
    if (list.reading == TEV2_READING::WithType && !ReadPrefix(cursor, type))
        return false;
    if (!cursor.TakeMemory(MostBytes<Object>() + sizeof array[0]))
        return false;
    if constexpr (requires(const Object& object) { object.GetType(); })
    {
        auto object = Object::Create(type);
        if (!object->Load(cursor, version))
            return false;
        array.push_back(std::move(object));
        return true;
    }
    else
    {
        return array.emplace_back(std::make_unique<Object>())->Load(cursor, version);
    }
}

bool IsSaved(const TEV2& scene, std::uint32_t instance_list)
{
    bool saved = false;
    VisitListsBy<&TEV2_LIST::save>(scene,
                                   [&](const auto& list, const auto&)
                                   {
                                       if constexpr (requires { list.index; })
                                           saved = saved || list.index == instance_list;
                                   });
    return saved;
}

bool LoadInstance(TEV2_MEMORY_CURSOR& cursor, float version, std::uint32_t chunkId, TEV2& scene)
{
    std::uint32_t list = 0;
    if (!ReadPrefix(cursor, list))
        return false;
    if (list >= kInstanceListCount)
        return cursor.Fail(TEV2_LOAD_CODE::BadInstanceList,
                           "at most " + std::to_string(kInstanceListCount - 1), std::to_string(list),
                           sizeof list);

    static_assert(MostBytes<TEV2_INSTANCE>() <= kMostObjectBytes);
    auto& instances = scene.instanceLists[list];
    const RecordScope scope(cursor, "instanceLists", list);
    const RecordScope place(cursor, "", instances.size());
    if (!IsSaved(scene, list))
        cursor.Warn(TEV2_LOAD_CODE::InstanceListNeverSaved, "a list other than 7 and 9",
                    std::to_string(list));
    if (!cursor.TakeMemory(MostBytes<TEV2_INSTANCE>() + sizeof instances[0]))
        return false;
    return instances.emplace_back(TEV2_INSTANCE::Create(chunkId))->Load(cursor, version);
}

bool SkipUnknown(TEV2_MEMORY_CURSOR& cursor, std::uint32_t id)
{
    std::uint32_t last = 0;
    while (FindChunkKind(last + 1) != nullptr)
        ++last;
    cursor.Warn(TEV2_LOAD_CODE::UnknownChunk, "a chunk id from 0 to " + std::to_string(last),
                std::to_string(id));
    cursor.current = cursor.chunkEnd;
    return true;
}

void WarnWhereRecordEnds(TEV2_MEMORY_CURSOR& cursor)
{
    if (cursor.current == cursor.chunkEnd)
        return;
    const bool before = cursor.current < cursor.chunkEnd;
    cursor.Warn(before ? TEV2_LOAD_CODE::RecordEndsBeforeChunk : TEV2_LOAD_CODE::RecordEndsAfterChunk,
                "end at " + std::to_string(cursor.chunkEnd - cursor.begin),
                "end at " + std::to_string(cursor.Offset()));
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
    if (cursor.begin == cursor.end)
        return cursor.Fail(TEV2_LOAD_CODE::EmptyImage, "a scene file", "no bytes");
    if (cursor.Remaining() > std::numeric_limits<std::uint32_t>::max())
    {
        return cursor.Fail(TEV2_LOAD_CODE::ImageTooLarge, "less than 4 GiB",
                           std::to_string(cursor.Remaining()) + " bytes");
    }
    const std::uint32_t magic = cursor.ReadU32();
    if (cursor.Failed())
        return false;
    if (magic != kMagic)
    {
        return cursor.Fail(TEV2_LOAD_CODE::BadMagic, "the magic " + HexText(kMagic),
                           magic == 0 ? "0, an interrupted save" : HexText(magic), sizeof magic);
    }

    float version = 0.0f;
    while (cursor.Remaining() > 0)
    {
        TEV2_CHUNK_SPAN chunk;
        chunk.offset = cursor.Offset();
        if (cursor.Remaining() < kChunkHeader)
        {
            return cursor.Fail(TEV2_LOAD_CODE::TruncatedChunkHeader, "8 bytes",
                               std::to_string(cursor.Remaining()) + " bytes");
        }
        chunk.size = cursor.ReadU32();
        chunk.id = cursor.ReadU32();
        // A size below 8 wraps round and is as wrong as one that is too large.
        if (cursor.Remaining() < std::uint32_t{chunk.size - kChunkHeader})
        {
            return cursor.Fail(TEV2_LOAD_CODE::BadChunkSize,
                               "8 to " + std::to_string(cursor.Remaining() + kChunkHeader),
                               std::to_string(chunk.size), kChunkHeader);
        }

        if (!cursor.EnterChunk(chunk))
            return false;
        const bool loaded = LoadChunk(cursor, chunk.id, version) && !cursor.Failed();
        if (chunk.id == information.GetChunkId())
        {
            version = information.version;
            if (cursor.Report() != nullptr)
                cursor.Report()->version = version;
        }
        if (!loaded)
            return false;
        WarnWhereRecordEnds(cursor);
        cursor.LeaveChunk();
    }

    if (!AfterLoad(cursor))
        return false;
    if (applyStartTime)
        SetTime(environment.timeRange.minimum);
    return true;
}

bool TEV2::LoadChunk(TEV2_MEMORY_CURSOR& cursor, std::uint32_t id, float version)
{
    if (id == kArrayLengthsChunk)
    {
        TEV2_ARRAY_LENGTH_HELPER lengths;
        {
            const RecordScope scope(cursor, "arrayLengths");
            if (!lengths.Load(cursor, version) || cursor.Failed())
                return false;
        }
        return lengths.Reserve(*this, cursor); // what this finds concerns the scene
    }
    if (TEV2_INSTANCE::FindKind(id) != nullptr)
        return LoadInstance(cursor, version, id, *this);

    bool known = false;
    bool loaded = false;
    VisitLists(*this,
               [&](const auto& list, auto& member)
               {
                   if (list.kind != id)
                       return;
                   known = true;
                   loaded = LoadMember(cursor, version, list, member);
               });
    return known ? loaded : SkipUnknown(cursor, id);
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
