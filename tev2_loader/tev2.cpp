#include "tev2_loader/tev2.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <string>
#include <type_traits>

namespace TEV2_LOADER
{

namespace
{

constexpr std::uint32_t kChunkHeader = 8; ///< u32 size, u32 id

/// The instance lists in file order. Lists 7 and 9 are in no file that is saved, list 8 comes last of all.
constexpr std::array<std::uint32_t, 7> kSavedInstanceLists = {3, 2, 5, 0, 4, 6, 1};
constexpr std::uint32_t kLastInstanceList = 8;

/// The instance lists that move with time, in their order.
constexpr std::array<std::size_t, 9> kMovingInstanceLists = {9, 3, 5, 0, 4, 6, 1, 7, 8};

std::string Hex(std::uint32_t value)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", value);
    return text;
}

bool IsSaved(std::uint32_t list)
{
    return list != 7 && list != 9;
}

/// Writes the chunk of a record. Where numbers stand between id and body, these and the id count in the
/// result.
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

template <typename Object>
bool SaveEach(TEV2_FILE_WRITER& writer, const TEV2::Array<Object>& array)
{
    bool saved = true;
    for (const auto& object : array)
    {
        if (object)
            saved &= SaveChunk(writer, *object);
    }
    return saved;
}

template <typename Object>
bool SaveEachWithType(TEV2_FILE_WRITER& writer, const TEV2::Array<Object>& array)
{
    bool saved = true;
    for (const auto& object : array)
    {
        if (object)
            saved &= SaveChunk(writer, *object, object->GetType());
    }
    return saved;
}

bool SaveInstances(TEV2_FILE_WRITER& writer, const TEV2& scene, std::uint32_t list)
{
    bool saved = true;
    for (const auto& instance : scene.instanceLists[list])
    {
        if (instance)
            saved &= SaveChunk(writer, *instance, list);
    }
    return saved;
}

/// The number that stands between a chunk's id and its body.
bool ReadPrefix(TEV2_MEMORY_CURSOR& cursor, std::uint32_t& prefix)
{
    const auto present = cursor.chunkEnd - cursor.current;
    if (present < static_cast<std::ptrdiff_t>(sizeof prefix))
        return cursor.Fail(TEV2_LOAD_CODE::ChunkTooSmall, "4 bytes", std::to_string(present) + " bytes");
    prefix = cursor.ReadU32();
    return true;
}

template <typename Record>
bool LoadEmbedded(TEV2_MEMORY_CURSOR& cursor, float version, const char* label, Record& record)
{
    const RecordScope scope(cursor, label);
    return record.Load(cursor, version);
}

/// The object is in its array before it is read.
template <typename Object>
bool LoadInto(TEV2_MEMORY_CURSOR& cursor, float version, const char* label, TEV2::Array<Object>& array)
{
    const RecordScope scope(cursor, label, array.size());
    if (!cursor.TakeMemory(sizeof(Object) + sizeof array[0]))
        return false;
    return array.emplace_back(std::make_unique<Object>())->Load(cursor, version);
}

/// The object is in its array only when it was read.
template <typename Object>
bool LoadIntoWithType(TEV2_MEMORY_CURSOR& cursor, float version, const char* label,
                      TEV2::Array<Object>& array)
{
    const RecordScope scope(cursor, label, array.size());
    std::uint32_t type = 0;
    if (!ReadPrefix(cursor, type) || !cursor.TakeMemory(sizeof(Object) + sizeof array[0]))
        return false;
    auto object = Object::Create(type);
    if (!object->Load(cursor, version))
        return false;
    array.push_back(std::move(object));
    return true;
}

bool LoadInstance(TEV2_MEMORY_CURSOR& cursor, float version, std::uint32_t chunkId, TEV2& scene)
{
    std::uint32_t list = 0;
    if (!ReadPrefix(cursor, list))
        return false;
    if (list >= TEV2::kInstanceLists)
        return cursor.Fail(TEV2_LOAD_CODE::BadInstanceList, "at most 9", std::to_string(list), sizeof list);

    auto& instances = scene.instanceLists[list];
    const RecordScope scope(cursor, "instanceLists", list);
    const RecordScope place(cursor, "", instances.size());
    if (!IsSaved(list))
        cursor.Warn(TEV2_LOAD_CODE::InstanceListNeverSaved, "a list other than 7 and 9",
                    std::to_string(list));
    if (!cursor.TakeMemory(sizeof(TEV2_GEOM_INSTANCE) + sizeof instances[0]))
        return false;
    return instances.emplace_back(TEV2_INSTANCE::Create(chunkId))->Load(cursor, version);
}

/// Whether no node has more than most nodes from itself up to the top level. Parents in a circle have.
bool NestsWithin(const std::vector<TEV2_MATRIX_NODE>& nodes, std::size_t most)
{
    const auto parent_of = [&nodes](std::size_t node)
    {
        const auto parent = static_cast<std::size_t>(nodes[node].parentIndex); // a negative one is beyond all
        return parent < nodes.size() ? parent : nodes.size();
    };
    std::vector<std::uint32_t> depths(nodes.size() + 1, 0); // 0: not known yet, and that of no node
    std::vector<std::size_t> way;
    for (std::size_t node = 0; node < nodes.size(); ++node)
    {
        way.clear();
        for (std::size_t at = node; at != nodes.size() && depths[at] == 0; at = parent_of(at))
        {
            way.push_back(at);
            if (way.size() > nodes.size())
                return false;
        }
        for (; !way.empty(); way.pop_back())
        {
            const std::uint32_t depth = depths[parent_of(way.back())] + 1;
            if (depth > most)
                return false;
            depths[way.back()] = depth;
        }
    }
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

bool TEV2::Save(TEV2_FILE_WRITER& writer) const
{
    TEV2_FILE_STREAM& stream = *writer.stream;
    const std::int32_t magicPosition = stream.Tell();
    const std::uint32_t unfinished = 0;
    stream.Write(&unfinished, sizeof unfinished);

    bool saved = SaveChunk(writer, information);
    saved &= SaveChunk(writer, TEV2_ARRAY_LENGTH_HELPER(*this));
    saved &= SaveChunk(writer, environment);
    if (globalLightTint)
        saved &= SaveChunk(writer, *globalLightTint);
    if (ambientLight)
        saved &= SaveChunk(writer, *ambientLight);
    saved &= SaveChunk(writer, cameraMan);
    saved &= SaveEachWithType(writer, lights);
    saved &= SaveEach(writer, cameras);
    saved &= SaveEach(writer, rigids);
    saved &= SaveEach(writer, animMeshes);
    saved &= SaveEach(writer, morphMeshes);
    saved &= SaveEach(writer, weightedMeshes);
    saved &= SaveEach(writer, bezierSplines);
    saved &= SaveEach(writer, helpers);
    saved &= SaveEach(writer, speedTreeReferences);
    saved &= SaveChunk(writer, matrixHierarchy);
    saved &= SaveEachWithType(writer, materials);
    for (const std::uint32_t list : kSavedInstanceLists)
        saved &= SaveInstances(writer, *this, list);
    saved &= SaveEach(writer, xrefs15);
    saved &= SaveEach(writer, xrefs20);
    saved &= SaveEach(writer, xrefObjects);
    saved &= SaveInstances(writer, *this, kLastInstanceList);

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
        return cursor.Fail(TEV2_LOAD_CODE::BadMagic, "the magic " + Hex(kMagic),
                           magic == 0 ? "0, an interrupted save" : Hex(magic), sizeof magic);
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
    switch (id)
    {
    case kInformationChunk:
        return LoadEmbedded(cursor, version, "information", information);
    case kArrayLengthsChunk:
    {
        TEV2_ARRAY_LENGTH_HELPER lengths;
        if (!LoadEmbedded(cursor, version, "arrayLengths", lengths) || cursor.Failed())
            return false;
        return lengths.Reserve(*this, cursor);
    }
    case kEnvironmentChunk:
        return LoadEmbedded(cursor, version, "environment", environment);
    case kGlobalLightTintChunk:
        globalLightTint = std::make_unique<TEV2_GLOBAL_LIGHT_TINT>();
        return LoadEmbedded(cursor, version, "globalLightTint", *globalLightTint);
    case kAmbientLightChunk:
    {
        auto light = std::make_unique<TEV2_AMBIENT_LIGHT>();
        if (!LoadEmbedded(cursor, version, "ambientLight", *light))
            return false;
        ambientLight = std::move(light);
        return true;
    }
    case kLightChunk:
        return LoadIntoWithType(cursor, version, "lights", lights);
    case kCameraChunk:
        return LoadInto(cursor, version, "cameras", cameras);
    case kRigidChunk:
        return LoadInto(cursor, version, "rigids", rigids);
    case kAnimMeshChunk:
        return LoadInto(cursor, version, "animMeshes", animMeshes);
    case kMorphMeshChunk:
        return LoadInto(cursor, version, "morphMeshes", morphMeshes);
    case kWeightedMeshChunk:
        return LoadInto(cursor, version, "weightedMeshes", weightedMeshes);
    case kBezierSplineChunk:
        return LoadInto(cursor, version, "bezierSplines", bezierSplines);
    case kMatrixHierarchyChunk:
        return LoadHierarchy(cursor, version);
    case kMaterialChunk:
        return LoadIntoWithType(cursor, version, "materials", materials);
    case kInstanceChunk:
    case kGeomInstanceChunk:
    case kInstanceMaterialsChunk:
    case kInstanceSubObjectsChunk:
        return LoadInstance(cursor, version, id, *this);
    case kXref15Chunk:
        return LoadInto(cursor, version, "xrefs15", xrefs15);
    case kHelperChunk:
        return LoadInto(cursor, version, "helpers", helpers);
    case kXref20Chunk:
        return LoadInto(cursor, version, "xrefs20", xrefs20);
    case kXrefObjectChunk:
        return LoadInto(cursor, version, "xrefObjects", xrefObjects);
    case kCameraManChunk:
        return LoadEmbedded(cursor, version, "cameraMan", cameraMan);
    case kXrefSpeedTreeChunk:
        return LoadInto(cursor, version, "speedTreeReferences", speedTreeReferences);
    default:
        cursor.Warn(TEV2_LOAD_CODE::UnknownChunk, "a chunk id from 0 to 23", std::to_string(id));
        cursor.current = cursor.chunkEnd;
        return true;
    }
}

bool TEV2::LoadHierarchy(TEV2_MEMORY_CURSOR& cursor, float version)
{
    const RecordScope scope(cursor, "matrixHierarchy");
    const TEV2_LOAD_LIMITS& limits = cursor.Limits();
    if (limits.nodes != 0)
    {
        TEV2_MEMORY_CURSOR ahead(cursor.current, cursor.Remaining());
        const std::uint32_t count = ahead.ReadU32();
        if (count > limits.nodes)
            return cursor.Fail(TEV2_LOAD_CODE::LimitExceeded,
                               "at most " + std::to_string(limits.nodes) + " nodes", std::to_string(count));
    }
    if (!matrixHierarchy.Load(cursor, version) || cursor.Failed())
        return false;
    if (limits.nesting != 0 && !NestsWithin(matrixHierarchy.nodes, limits.nesting))
        return cursor.Fail(TEV2_LOAD_CODE::LimitExceeded,
                           "nodes nested at most " + std::to_string(limits.nesting) + " deep", "deeper");
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
    information = {};
    environment = {};
    ambientLight.reset();
    globalLightTint.reset();
    matrixHierarchy = {};
    cameraMan = {};
    // Arrays give their memory back, too: the next load counts what it takes.
    const auto release = [](auto&... arrays) { ((arrays = std::decay_t<decltype(arrays)>()), ...); };
    release(lights, cameras, rigids, animMeshes, morphMeshes, weightedMeshes, bezierSplines, helpers,
            speedTreeReferences, materials, instanceLists, xrefs15, xrefs20, xrefObjects,
            inverseBindMatrices);
}

/// Reaches everything that moves; Update takes the cameras before the rigids, SetTime after them.
template <typename Call>
void TEV2::Broadcast(Call call, bool camerasFirst)
{
    const auto each = [&call](auto& array)
    {
        for (const auto& object : array)
        {
            if (object)
                call(*object);
        }
    };

    call(matrixHierarchy);
    call(environment);
    if (ambientLight)
        call(*ambientLight);
    if (globalLightTint)
        call(*globalLightTint);
    each(lights);
    if (camerasFirst)
        each(cameras);
    each(rigids);
    if (!camerasFirst)
        each(cameras);
    each(animMeshes);
    each(morphMeshes);
    each(weightedMeshes);
    each(bezierSplines);
    for (const auto& mesh : weightedMeshes)
    {
        if (mesh)
            mesh->Bind(matrixHierarchy, inverseBindMatrices);
    }
    each(materials);
    each(speedTreeReferences);
    for (const std::size_t list : kMovingInstanceLists)
        each(instanceLists[list]);
    each(xrefs15);
    each(xrefs20);
    call(cameraMan);
}

void TEV2::Update(float delta_time)
{
    Broadcast([delta_time](TEV2_INTERNAL_ANIM_OBJECT& object) { object.Update(delta_time); }, true);
}

void TEV2::SetTime(float time)
{
    Broadcast([time](TEV2_INTERNAL_ANIM_OBJECT& object) { object.SetTime(time); }, false);
}

} // namespace TEV2_LOADER
