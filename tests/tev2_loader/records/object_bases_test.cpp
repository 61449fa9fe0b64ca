#include "tests/support/records.h"

#include "tev2_loader/math/values.h"
#include "tev2_loader/records/lit_object.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

TEST(Entity, IsItsName)
{
    TEV2_ENTITY entity;
    EXPECT_EQ(SavedBytes(entity), Bytes().U8({0, 0}).data);
    entity.name = Wide(u"ab");
    EXPECT_EQ(SavedBytes(entity), Bytes().U8({2, 0, 'a', 0, 'b', 0}).data);
    EXPECT_EQ(LoadedBytes(entity, Bytes().Text(u"new"), 1.0f), 8u);
    EXPECT_EQ(entity.name, Wide(u"new"));
}

TEST(LitObject, IsItsLightList)
{
    TEV2_LIT_OBJECT object;
    EXPECT_EQ(SavedBytes(object), Bytes().U32(0).data);
    object.lights = {5, 0xFFFFFFFFu};
    EXPECT_EQ(SavedBytes(object), Bytes().U32({2, 5, 0xFFFFFFFFu}).data);
    EXPECT_EQ(LoadedBytes(object, Bytes().U32({1, 9}), 1.0f), 8u);
    EXPECT_EQ(object.lights, std::vector<std::uint32_t>{9});
}

TEST(ValueRecord, IsItsFloatsInOrder)
{
    EXPECT_EQ(SavedBytes(TEV2_FLOAT32_RANGE(1, 2)), Bytes().F32({1, 2}).data);
    EXPECT_EQ(SavedBytes(TEV2_COLOUR(1, 2, 3, 4)), Bytes().F32({1, 2, 3, 4}).data);
    EXPECT_EQ(SavedBytes(TEV2_RECTF({1, 2}, {3, 4})), Bytes().F32({1, 2, 3, 4}).data);
    EXPECT_EQ(SavedBytes(TEV2_BINORMAL_TANGENT({1, 2, 3}, {4, 5, 6})), Bytes().F32({1, 2, 3, 4, 5, 6}).data);
    EXPECT_EQ(SavedBytes(TEV2_BOUNDING_BOX({1, 2, 3}, {4, 5, 6})), Bytes().F32({1, 2, 3, 4, 5, 6}).data);

    TEV2_BOUNDING_BOX box;
    EXPECT_EQ(LoadedBytes(box, Bytes().F32({6, 5, 4, 3, 2, 1}), 1.0f), 24u);
    EXPECT_TRUE(box == TEV2_BOUNDING_BOX({6, 5, 4}, {3, 2, 1}));
}

TEST(Matrix, MultipliesAndInverts)
{
    const TEV2_MATRIX_3X4 turn{{{0, -2, 0, 1}, {1, 0, 0, 2}, {0, 0, 4, 3}}};
    const TEV2_MATRIX_3X4 move{{{1, 0, 0, 10}, {0, 1, 0, 20}, {0, 0, 1, 30}}};
    const float expected[3][4] = {{0, -2, 0, -39}, {1, 0, 0, 12}, {0, 0, 4, 123}};
    const TEV2_MATRIX_3X4 product = Product(turn, move);
    const TEV2_MATRIX_3X4 identity = Product(Inverse(turn), turn);
    const TEV2_MATRIX_3X4 singular = Inverse({{{1, 0, 0, 5}, {2, 0, 0, 6}, {0, 0, 1, 7}}});
    for (int row = 0; row < 3; ++row)
    {
        for (int column = 0; column < 4; ++column)
        {
            EXPECT_EQ(product.m[row][column], expected[row][column]);
            EXPECT_NEAR(identity.m[row][column], TEV2_MATRIX_3X4().m[row][column], 1e-6f);
            EXPECT_FALSE(std::isfinite(singular.m[row][column]));
        }
    }
}

} // namespace
