#include "tests/tev2_loader/robustness/dense_files.h"

using namespace TEV2_LOADER;

namespace tv2_tests
{

Bytes Current()
{
    return FileOfVersion(kVersion);
}

Bytes Many(std::size_t size, const Bytes& one)
{
    Bytes all;
    while (all.data.size() < size)
        all.Append(one);
    return all;
}

Bytes Node(std::uint32_t parent)
{
    return Bytes().Text(u"").U32(parent).Zeros(3 * 4 + 2 + 20);
}

Bytes DenseBody::Typed() const
{
    return Current().Append(chunk);
}

Bytes DenseBody::Kept() const
{
    Bytes longer = chunk;
    longer.Zeros(1);
    SetWordAt(longer.data, 0, static_cast<std::uint32_t>(longer.data.size()));
    return Current().Append(longer);
}

namespace
{

/// An array of many: its count and its elements.
Bytes ArrayOf(std::size_t size, const Bytes& one)
{
    const Bytes all = Many(size, one);
    return Bytes().U32(static_cast<std::uint32_t>(all.data.size() / one.data.size())).Append(all);
}

/// The hierarchy of one node with such properties.
Bytes NodeWith(const Bytes& properties)
{
    return Current().Chunk(12, Bytes().U32(1).Text(u"").Zeros(4 + 3 * 4 + 2).Append(properties));
}

/// A chunk with a placed object of zeros, the fields before the layout number, and those behind it.
Bytes PlacedChunk(std::uint32_t id, const Bytes& prefix, const Bytes& before, const Bytes& behind)
{
    return Bytes().Chunk(id,
                         Bytes::Of(prefix, Bytes().Zeros(3 * 2 + 4 + 5 * 4 + 4), before, kOurLayout, behind));
}

/// A mesh without sub-objects.
Bytes Mesh(std::uint32_t id, const Bytes& vertices)
{
    return PlacedChunk(id, {}, Bytes().U32(0), Bytes::Of(0u, 0u, 0u, 0u, vertices));
}

} // namespace

std::vector<DenseFile> DenseFiles(std::size_t size)
{
    const auto many = [size](const Bytes& one) { return Many(size, one); };
    const auto all = [size](const Bytes& one) { return ArrayOf(size, one); };
    const Bytes node = Node(0xFFFFFFFFu);
    const Bytes camera_head = Bytes().Zeros(50);
    const Bytes track = Bytes().Text(u"").U32({1, 0}).Zeros(16);
    return {
        {"rigids of another version", FileOfVersion(1.0f).Append(many(Bytes().Chunk(7)))},
        {"instances that are never saved", Current().Append(many(Bytes().Chunk(18, Bytes().U32(7))))},
        {"lights of no class", Current().Append(many(Bytes().Chunk(5, Bytes().U32(9))))},
        {"materials of no class", Current().Append(many(Bytes().Chunk(13, Bytes().U32(9))))},
        {"cameras", Current().Append(many(Bytes().Chunk(6, Bytes().Zeros(54 + 4))))},
        {"unknown chunks", Current().Append(many(Bytes().Chunk(99)))},
        {"nodes", Current().Chunk(12, all(node))},
        {"nodes with a mesh that follows them", Current().Chunk(10).Chunk(12, all(node))},
        {"nodes without their parents", Current().Chunk(12, all(Node(0x7FFFFFFFu)))},
        {"nodes of an old version", FileOfVersion(1.0f).Chunk(12, all(Bytes().Zeros(80)))},
        {"string arrays", NodeWith(all(Bytes().Zeros(6)).Zeros(16))},
        {"strings", NodeWith(Bytes().U32(1).Text(u"").Append(all(Bytes().Zeros(2))).Zeros(16))},
        {"strings of 8 units",
         NodeWith(Bytes().U32(1).Text(u"").Append(all(Bytes().Text(u"12345678"))).Zeros(16))},
        {"named values", NodeWith(Bytes().Zeros(4).Append(all(Bytes().Zeros(6))).Zeros(12))},
        {"named tracks", NodeWith(Bytes().Zeros(8).Append(all(track)).Zeros(8))},
        {"effects", Current().Chunk(6, Bytes(camera_head).Zeros(4).Append(all(Bytes().U32(0))))},
        {"empty effects",
         Current().Chunk(6, Bytes(camera_head).Zeros(4).Append(all(Bytes().U32({1, 0, 0}))))},
        {"effects of ours",
         Current().Chunk(6, Bytes(camera_head).Zeros(4).Append(all(Bytes().U32({1, 0, kOurLayout, 0}))))},
        {"keys", Current().Chunk(22, Bytes().U32({1, 8, 0, 0}).Append(all(Bytes().U32(0))).U32(0))},
        {"ranges",
         Current().Chunk(6, Bytes().Zeros(46).U32({1, 1, 0, 0, 0}).Append(all(Bytes().Zeros(8))).Zeros(8))},
        {"columns without vertices", Current().Append(many(Mesh(7, Bytes::Of(0u, 64u, 64u, 0u, 0u))))},
        {"moving meshes", Current().Append(many(Mesh(8, Bytes().Zeros(3 * 4))))},
        {"skins", Current().Append(many(Mesh(10, Bytes().Zeros(9 * 4))))},
        {"one large body", Current().Chunk(7, Bytes().Zeros(size))},
        {"one large light", Current().Chunk(5, Bytes().U32(9).Zeros(size))},
        {"one large ambient light", Current().Chunk(4, Bytes().Zeros(size))},
    };
}

std::vector<DenseBody> DenseBodies(std::size_t size)
{
    const auto all = [size](const Bytes& item) { return ArrayOf(size, item); };
    const auto vertices = static_cast<std::uint32_t>(size / 12);
    const auto shader = [&](std::size_t array, const Bytes& elements)
    {
        return Bytes().Chunk(13, Bytes::Of(1u, u"", kOurLayout, 0u, u"", u"", Bytes().Zeros(4 * array),
                                           all(elements), Bytes().Zeros(4 * (6 - array))));
    };
    const auto instance = [](std::uint32_t id, const Bytes& lights, const Bytes& own)
    { return PlacedChunk(id, Bytes().U32(0), {}, Bytes::Of(0u, lights, own)); };
    const Bytes none = Bytes().U32(0);
    const Bytes no_vertices = Bytes().Zeros(5 * 4);
    const Bytes bitmap = Bytes::Of(0u, u"", 0u, u"", Bytes().Zeros(5 * 4 + 4 + 4 * 4 + 3 * 4 + 4));
    const Bytes normal = Bytes::Of(1u, u"", 0u, 0u, Bytes().Zeros(3 * 4 + 4));
    const Bytes target = Bytes::Of(u"", Bytes().Zeros(4 * 4));
    return {
        {"sub-objects", PlacedChunk(7, {}, none, Bytes::Of(0u, 0u, 0u, all(Bytes().Zeros(8)), no_vertices))},
        {"triangles of an instance", instance(19, none, Bytes::Of(1u, 0u, all(Bytes().Zeros(12))))},
        {"sub-objects of an instance", instance(19, none, all(Bytes().Zeros(8)))},
        {"materials of an instance", instance(18, none, all(Bytes().Zeros(4)))},
        {"lights of an instance", instance(16, all(Bytes().Zeros(4)), {})},
        {"vertices", Mesh(7, Bytes::Of(vertices, 0u, 0u, Bytes().Zeros(std::size_t{12} * vertices), 0u, 0u))},
        {"moving vertices", Mesh(8, Bytes::Of(vertices, 0u, 0u, Bytes().Zeros(std::size_t{12} * vertices)))},
        {"targets", Mesh(9, Bytes::Of(no_vertices, all(target)))},
        {"bones", Mesh(10, Bytes::Of(no_vertices, 0u, all(Bytes().Zeros(4)), 0u, 0u))},
        {"splines", PlacedChunk(11, {}, {}, all(Bytes().Zeros(12)))},
        {"moving curves", PlacedChunk(11, {}, {}, Bytes::Of(1u, 1u, 0u, all(Bytes().Zeros(16))))},
        {"curves", PlacedChunk(11, {}, {}, Bytes::Of(1u, 0u, 0u, all(Bytes().Zeros(48))))},
        {"channel maps", Bytes().Chunk(13, Bytes::Of(0u, u"", kOurLayout, Bytes().Zeros(4 + 8 * 4),
                                                     all(Bytes::Of(0u, normal))))},
        {"shader texts", shader(0, Bytes().Zeros(4))},
        {"shader numbers", shader(1, Bytes().Zeros(6))},
        {"shader vectors", shader(4, Bytes().Zeros(6))},
        {"shader lights", shader(5, Bytes().Zeros(6))},
        {"shader bitmaps", shader(6, bitmap)},
        {"shader normal maps", shader(6, normal)},
    };
}

std::vector<DenseFile> DenseChunks(std::size_t size)
{
    std::vector<DenseFile> files;
    for (std::uint32_t id = 2; FindChunkKind(id) != nullptr; ++id)
    {
        const bool prefixed = id == 5 || id == 13 || TEV2_INSTANCE::FindKind(id) != nullptr;
        if (id != 2 && id != 6 && id != 12 && id != 22)
            files.push_back(
                {FindChunkKind(id)->title,
                 Current().Append(Many(size, Bytes().Chunk(id, Bytes().Zeros(prefixed ? 4 : 0))))});
    }
    return files;
}

} // namespace tv2_tests
