#include "tev2_loader/detail/scene_reader.h"

#include "tev2_loader/array_length_helper.h"

#include <concepts>
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

template <typename Object>
constexpr bool kEndsWithChunk =
    std::derived_from<Object, TEV2_KEPT_BODY>&& std::derived_from<Object, TEV2_CHUNK_OBJECT>;

/// The number between id and body.
bool ReadPrefix(TEV2_MEMORY_CURSOR& cursor, std::uint32_t& prefix)
{
    const auto present = cursor.chunkEnd - cursor.current;
    if (present < static_cast<std::ptrdiff_t>(sizeof prefix))
        return cursor.Fail(TEV2_LOAD_CODE::ChunkTooSmall, "4 bytes", std::to_string(present) + " bytes");
    prefix = cursor.ReadU32();
    return true;
}

bool GoToEnd(TEV2_MEMORY_CURSOR& cursor)
{
    cursor.current = cursor.chunkEnd;
    return true;
}

template <typename Record>
bool LoadMember(TEV2_MEMORY_CURSOR& cursor, float version, const TEV2_LIST& list, TEV2_BODIES /*bodies*/,
                Record& record)
{
    static_assert(!kEndsWithChunk<Record>);
    const RecordScope scope(cursor, list.label);
    return record.Load(cursor, version);
}

template <typename Object>
bool LoadMember(TEV2_MEMORY_CURSOR& cursor, float version, const TEV2_LIST& list, TEV2_BODIES bodies,
                std::unique_ptr<Object>& object)
{
    static_assert(kEndsWithChunk<Object>);
    if (bodies == TEV2_BODIES::Skip)
        return GoToEnd(cursor);
    const RecordScope scope(cursor, list.label);
    auto read = std::make_unique<Object>();
    if (list.reading == TEV2_READING::WhenLoaded)
    {
        const bool loaded = read->Load(cursor, version);
        if (loaded)
            object = std::move(read);
        return loaded;
    }
    object = std::move(read);
    return object->Load(cursor, version);
}

template <typename Object>
bool AppendNull(TEV2_MEMORY_CURSOR& cursor, TEV2::Array<Object>& array)
{
    if (!cursor.TakeMemory(sizeof array[0]))
        return false;
    array.emplace_back();
    return GoToEnd(cursor);
}

template <typename Object>
bool LoadMember(TEV2_MEMORY_CURSOR& cursor, float version, const TEV2_LIST& list, TEV2_BODIES bodies,
                TEV2::Array<Object>& array)
{
    static_assert(MostBytes<Object>() <= kMostObjectBytes);
    const RecordScope scope(cursor, list.label, array.size());
    [[maybe_unused]] std::uint32_t type = 0;
    if (list.reading == TEV2_READING::WithType && !ReadPrefix(cursor, type))
        return false;
    if (kEndsWithChunk<Object> && bodies == TEV2_BODIES::Skip)
        return AppendNull(cursor, array);
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

bool LoadInstance(TEV2_MEMORY_CURSOR& cursor, float version, std::uint32_t chunkId, TEV2_BODIES bodies,
                  TEV2& scene)
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
    if (bodies == TEV2_BODIES::Skip)
        return AppendNull(cursor, instances);
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
    return GoToEnd(cursor);
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

bool ReadMagic(TEV2_MEMORY_CURSOR& cursor)
{
    if (cursor.begin == cursor.end)
        return cursor.Fail(TEV2_LOAD_CODE::EmptyImage, "a scene file", "no bytes");
    if (cursor.Remaining() > std::numeric_limits<std::uint32_t>::max())
    {
        return cursor.Fail(TEV2_LOAD_CODE::ImageTooLarge, "less than 4 GiB",
                           std::to_string(cursor.Remaining()) + " bytes");
    }
    const std::uint32_t magic = cursor.ReadU32();
    if (cursor.Failed() || magic == kMagic)
        return !cursor.Failed();
    return cursor.Fail(TEV2_LOAD_CODE::BadMagic, "the magic " + HexText(kMagic),
                       magic == 0 ? "0, an interrupted save" : HexText(magic), sizeof magic);
}

bool ReadHeader(TEV2_MEMORY_CURSOR& cursor, TEV2_CHUNK_SPAN& chunk)
{
    chunk.offset = cursor.Offset();
    if (cursor.Remaining() < kChunkHeader)
    {
        return cursor.Fail(TEV2_LOAD_CODE::TruncatedChunkHeader, "8 bytes",
                           std::to_string(cursor.Remaining()) + " bytes");
    }
    chunk.size = cursor.ReadU32();
    chunk.id = cursor.ReadU32();
    // A size below 8 wraps round and is as wrong as one that is too large.
    if (cursor.Remaining() >= std::uint32_t{chunk.size - kChunkHeader})
        return true;
    return cursor.Fail(TEV2_LOAD_CODE::BadChunkSize,
                       "8 to " + std::to_string(cursor.Remaining() + kChunkHeader),
                       std::to_string(chunk.size), kChunkHeader);
}

} // namespace

bool TEV2_SCENE_READER::Read(TEV2_MEMORY_CURSOR& cursor)
{
    if (!ReadMagic(cursor))
        return false;
    float version = 0.0f;
    while (cursor.Remaining() > 0)
    {
        TEV2_CHUNK_SPAN chunk;
        if (!ReadHeader(cursor, chunk) || !cursor.EnterChunk(chunk))
            return false;
        const bool loaded = ReadChunk(cursor, chunk.id, version) && !cursor.Failed();
        if (chunk.id == scene_.information.GetChunkId())
        {
            version = scene_.information.version;
            if (cursor.Report() != nullptr)
                cursor.Report()->version = version;
        }
        if (!loaded)
            return false;
        WarnWhereRecordEnds(cursor);
        cursor.LeaveChunk();
    }
    return true;
}

bool TEV2_SCENE_READER::ReadChunk(TEV2_MEMORY_CURSOR& cursor, std::uint32_t id, float version)
{
    if (id == kArrayLengthsChunk)
    {
        TEV2_ARRAY_LENGTH_HELPER lengths;
        {
            const RecordScope scope(cursor, "arrayLengths");
            if (!lengths.Load(cursor, version) || cursor.Failed())
                return false;
        }
        return lengths.Reserve(scene_, cursor); // what this finds concerns the scene
    }
    if (TEV2_INSTANCE::FindKind(id) != nullptr)
        return LoadInstance(cursor, version, id, bodies_, scene_);

    bool known = false;
    bool loaded = false;
    VisitLists(scene_,
               [&](const auto& list, auto& member)
               {
                   if (list.kind != id)
                       return;
                   known = true;
                   loaded = LoadMember(cursor, version, list, bodies_, member);
               });
    return known ? loaded : SkipUnknown(cursor, id);
}

} // namespace TEV2_LOADER
