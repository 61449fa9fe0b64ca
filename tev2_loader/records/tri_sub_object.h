#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/records/record_of.h"

#include <array>
#include <cstdint>
#include <tuple>
#include <vector>

namespace TEV2_LOADER
{

/// The three corners of a triangle as a record of its own; meshes hold their triangles as plain numbers.
class TEV2_CARD32_TRIPLE final : public TEV2_RECORD_OF<TEV2_CARD32_TRIPLE, TEV2_SERIALISABLE_OBJECT>
{
public:
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    std::uint32_t third = 0;

    TEV2_CARD32_TRIPLE() = default;
    TEV2_CARD32_TRIPLE(std::uint32_t a, std::uint32_t b, std::uint32_t c) : first(a), second(b), third(c) {}

    template <typename Self, typename Archive>
    static void Fields(Self& triple, Archive& archive)
    {
        archive.Value("first", triple.first);
        archive.Value("second", triple.second);
        archive.Value("third", triple.third);
    }
};

/// Three vertex indices. Seen from the front the corners run clockwise, the world being left-handed; below a mirroring
/// node the other side is the front.
using TEV2_TRIANGLE = std::array<std::uint32_t, 3>;

/// The triangles of a mesh that have one material.
class TEV2_TRI_SUB_OBJECT : public TEV2_RECORD_OF<TEV2_TRI_SUB_OBJECT, TEV2_SERIALISABLE_OBJECT>
{
public:
    /// Index in the scene's materials, or kNone. May lie beyond them.
    std::uint32_t material = kNone;

    /// An index buffer, ready for upload. In a typed mesh that was loaded every index is below its number of vertices.
    std::vector<TEV2_TRIANGLE> triangles;

    TEV2_CARD32_TRIPLE Triangle(std::size_t index) const
    {
        return {triangles[index][0], triangles[index][1], triangles[index][2]};
    }

    void Append(const TEV2_CARD32_TRIPLE& triangle)
    {
        triangles.push_back({triangle.first, triangle.second, triangle.third});
    }

    template <typename Self, typename Archive>
    static void Fields(Self& object, Archive& archive)
    {
        archive.Value("material", object.material);
        archive.Values("triangles", object.triangles);
    }
};

} // namespace TEV2_LOADER
