#include "tests/support/sample_scenes.h"

#include <cmath>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

void ExpectMatrix(const TEV2_MATRIX_3X4& found, const float (&expected)[3][4], float tolerance = 0.0f)
{
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 4; ++column)
            EXPECT_NEAR(found.m[row][column], expected[row][column], tolerance) << row << ", " << column;
}

auto Constant(const TEV2_VECTOR_3& value)
{
    return MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, value}});
}

auto Constant(const TEV2_QUATERNION& value)
{
    return MakeTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({{0.0f, value}});
}

const Bytes kTranslation = SampleTrackBytes(3, Bytes().F32({1, 2, 3, 4, 5, 6}));
const Bytes kRotation = SampleTrackBytes(6, Bytes().F32({0, 0, 0, 1, 1, 0, 0, 0}));

TEST(MatrixNode, WritesSevenItems)
{
    TEV2_MATRIX_HIERARCHY hierarchy;
    ExpectStoredAs(hierarchy, Bytes().U32(0));

    hierarchy.nodes.resize(2);
    TEV2_MATRIX_NODE& node = hierarchy.nodes[1];
    node.name = Wide(u"n");
    node.parentIndex = 0;
    node.translation = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({1, 2, 3}, {4, 5, 6});
    node.rotation = SampleTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({}, {1, 0, 0, 0});
    node.userText = Wide(u"u");
    node.properties.floatValues.emplace_back();
    const Bytes empty = Bytes::Of(u"", 0xFFFFFFFFu, Bytes().Zeros(3 * 4 + 2 + 20));
    const Bytes full = Bytes::Of(u"n", 0u, kTranslation, kRotation, 0u, u"u", 0u, 0u, 1u, u"", 0u, 0u, 0u);
    const Bytes both = Bytes::Of(2u, empty, full);
    ExpectStoredAs(hierarchy, both);
    EXPECT_EQ(LoadedBytes(hierarchy, both, kVersion), both.data.size());
    EXPECT_EQ(SavedBytes(hierarchy), both.data) << "loaded over what there was";
}

TEST(MatrixNode, TakesTheMatrixOfOldVersionsAsItsWorldMatrix)
{
    const Bytes matrix = Bytes().F32({0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1});
    const Bytes bytes = Bytes::Of(1u, u"", 0xFFFFFFFEu, 0u, 0u, matrix, u"", Bytes().Zeros(20));
    TEV2_MATRIX_HIERARCHY hierarchy;
    EXPECT_EQ(LoadedBytes(hierarchy, bytes, 1.05f), bytes.data.size());
    ExpectMatrix(hierarchy.nodes[0].worldMatrix, {{0, 3, 6, 9}, {1, 4, 7, 10}, {2, 5, 8, 11}});
    EXPECT_EQ(hierarchy.nodes[0].parentMatrix, nullptr);
}

TEST(MatrixNode, PutsScaleUnderRotationUnderTranslation)
{
    TEV2_MATRIX_NODE node;
    node.SetTime(0.0f);
    ExpectMatrix(node.worldMatrix, {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}});

    node.rotation = Constant(TEV2_QUATERNION{0, 0, 0, 1});
    node.scale = Constant(TEV2_VECTOR_3{2, 3, 4});
    node.translation = Constant(TEV2_VECTOR_3{5, 6, 7});
    node.SetTime(0.0f);
    ExpectMatrix(node.worldMatrix, {{2, 0, 0, 5}, {0, 3, 0, 6}, {0, 0, 4, 7}});

    // A quarter turn about z: x goes to y, and each column takes its own scale.
    node.rotation = Constant(TEV2_QUATERNION{0, 0, 0.70710678f, 0.70710678f});
    node.Update(0.0f);
    ExpectMatrix(node.worldMatrix, {{0, -3, 0, 5}, {2, 0, 0, 6}, {0, 0, 4, 7}}, 1e-6f);

    // Not normalised: every entry of the rotation block from one quaternion whose products all differ.
    node.scale = nullptr;
    node.rotation = Constant(TEV2_QUATERNION{1, 2, 3, 5});
    node.SetTime(0.0f);
    ExpectMatrix(node.worldMatrix, {{-25, -26, 26, 5}, {34, -19, 2, 6}, {-14, 22, -9, 7}});
}

TEST(MatrixHierarchy, PlacesChildrenInTheirParents)
{
    TEV2_MATRIX_HIERARCHY hierarchy;
    hierarchy.nodes.resize(3);
    hierarchy.nodes[0].translation = Constant(TEV2_VECTOR_3{10, 0, 0});
    hierarchy.nodes[0].rotation = Constant(TEV2_QUATERNION{0, 0, 0.70710678f, 0.70710678f});
    hierarchy.nodes[1].parentIndex = 0;
    hierarchy.nodes[1].translation = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({0, 0, 0}, {4, 0, 0});
    hierarchy.nodes[2].parentIndex = 1;
    hierarchy.nodes[2].translation = Constant(TEV2_VECTOR_3{0, 1, 0});
    hierarchy.LinkParents();
    hierarchy.SetTime(1.5f);
    ExpectMatrix(hierarchy.nodes[2].worldMatrix, {{0, -1, 0, 9}, {1, 0, 0, 2}, {0, 0, 1, 0}}, 1e-6f);
    hierarchy.Update(0.5f);
    ExpectMatrix(hierarchy.nodes[2].worldMatrix, {{0, -1, 0, 9}, {1, 0, 0, 3}, {0, 0, 1, 0}}, 1e-6f);
}

TEST(MatrixHierarchy, LinksNoParentOutsideItself)
{
    Bytes bytes = Bytes().U32(6);
    for (const std::uint32_t parent : {0xFFFFFFFFu, 0u, 5u, 6u, 0x7FFFFFFFu, 0x80000000u})
        bytes.Text(u"").U32(parent).Zeros(3 * 4 + 2 + 20);
    TEV2_LOAD_REPORT report;
    TEV2_MEMORY_CURSOR cursor(bytes.data.data(), bytes.data.size(), &report);
    TEV2_MATRIX_HIERARCHY hierarchy;
    EXPECT_TRUE(hierarchy.Load(cursor, kVersion));
    const TEV2_MATRIX_3X4* const expected[] = {
        nullptr, &hierarchy.nodes[0].worldMatrix, &hierarchy.nodes[5].worldMatrix, nullptr, nullptr, nullptr};
    for (std::size_t index = 0; index < 6; ++index)
        EXPECT_EQ(hierarchy.nodes[index].parentMatrix, expected[index]) << index;

    ASSERT_EQ(report.findings.size(), 2u);
    EXPECT_EQ(report.findings[0].code, TEV2_LOAD_CODE::ParentOutside);
    EXPECT_EQ(report.findings[0].path, "nodes[3]");
    EXPECT_EQ(report.findings[1].path, "nodes[4]");

    // A node that is its own parent takes its matrix as it stands.
    hierarchy.nodes[0].parentIndex = 0;
    hierarchy.nodes[0].translation = Constant(TEV2_VECTOR_3{1, 0, 0});
    hierarchy.LinkParents();
    hierarchy.SetTime(0.0f);
    hierarchy.SetTime(0.0f);
    EXPECT_EQ(hierarchy.nodes[0].worldMatrix.m[0][3], 2.0f);
}

TEST(MatrixHierarchy, SaveWatchesNamesTracksAndParents)
{
    const ScratchFolder folder;
    TEV2_MATRIX_HIERARCHY hierarchy;
    hierarchy.nodes.resize(1);
    TEV2_FILE_WRITER writer(TEV2_WIDE_STRING::FromBytes(folder.Path("guard")), false, true);
    EXPECT_FALSE(hierarchy.Save(writer));
    EXPECT_FALSE(hierarchy.nodes[0].Save(writer));
}

TEST(Matrix, MultipliesAndInverts)
{
    const TEV2_MATRIX_3X4 turn{{{0, -2, 0, 1}, {1, 0, 0, 2}, {0, 0, 4, 3}}};
    const TEV2_MATRIX_3X4 move{{{1, 0, 0, 10}, {0, 1, 0, 20}, {0, 0, 1, 30}}};
    ExpectMatrix(Product(turn, move), {{0, -2, 0, -39}, {1, 0, 0, 12}, {0, 0, 4, 123}});
    ExpectMatrix(Product(Inverse(turn), turn), {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}, 1e-6f);
    for (const auto& row : Inverse({{{1, 0, 0, 5}, {2, 0, 0, 6}, {0, 0, 1, 7}}}).m)
        for (const float number : row)
            EXPECT_FALSE(std::isfinite(number)) << "singular";
}

} // namespace
