#include "tev2_loader/math/detail/float4.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

using namespace TEV2_LOADER;

namespace
{

using Four = std::array<float, 4>;

template <typename Form>
std::array<std::uint32_t, 4> Bits(const Form& form)
{
    Four floats;
    form.Store(floats);
    return std::bit_cast<std::array<std::uint32_t, 4>>(floats);
}

template <typename Form>
class Float4Test : public testing::Test
{
};

#if defined(TEV2_HAS_SSE)
using Forms = testing::Types<PlainFloat4, SseFloat4>;
#else
using Forms = testing::Types<PlainFloat4>;
#endif
TYPED_TEST_SUITE(Float4Test, Forms);

TYPED_TEST(Float4Test, DoesWithEachWhatIsDoneWithOne)
{
    const Four a = {1.5f, -0.0f, 1e-39f, 3e38f};
    const Four b = {-1.1f, 0.0f, 1e-20f, 7.0f};
    const auto left = TypeParam::Load(a);
    const auto right = TypeParam::Load(b);
    Four sum;
    Four difference;
    Four product;
    for (std::size_t i = 0; i < 4; ++i)
    {
        sum[i] = a[i] + b[i];
        difference[i] = a[i] - b[i];
        product[i] = a[i] * b[i];
    }
    EXPECT_EQ(Bits(left + right), Bits(TypeParam::Load(sum)));
    EXPECT_EQ(Bits(left - right), Bits(TypeParam::Load(difference)));
    EXPECT_EQ(Bits(left * right), Bits(TypeParam::Load(product)));
    EXPECT_EQ(Bits(TypeParam::template Picked<2, 0, 3, 1>(left, right)),
              Bits(TypeParam::Of(a[2], a[0], b[3], b[1])));
    EXPECT_EQ(Bits(TypeParam::All(a[3])), Bits(TypeParam::Of(a[3], a[3], a[3], a[3])));
    EXPECT_EQ(left.First(), a[0]);
    EXPECT_EQ(Bits(left.LastAlone()), Bits(TypeParam::Of(-0.0f, -0.0f, -0.0f, a[3])));
    const auto divisor = TypeParam::Of(3.0f, 7.0f, -7.0f, 0.0f);
    EXPECT_EQ(Bits(left / divisor),
              Bits(TypeParam::Of(a[0] / 3.0f, -0.0f, a[2] / -7.0f, std::numeric_limits<float>::infinity())));
    EXPECT_EQ(Bits(TypeParam::Root(TypeParam::Of(2.0f, 9.0f, -0.0f, 1e-39f))),
              Bits(TypeParam::Of(std::sqrt(2.0f), 3.0f, -0.0f, std::sqrt(1e-39f))));
}

TYPED_TEST(Float4Test, ChoosesLanes)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const auto left = TypeParam::Of(1.0f, 2.0f, -0.0f, nan);
    const auto right = TypeParam::Of(0.5f, 3.0f, 0.0f, nan);
    const auto yes = TypeParam::Of(1.0f, 2.0f, 3.0f, 4.0f);
    const auto no = TypeParam::Of(-1.0f, -2.0f, -3.0f, -4.0f);
    EXPECT_EQ(TypeParam::Above(left, right), 1u);
    EXPECT_EQ(Bits(TypeParam::IfAbove(left, right, yes, no)), Bits(TypeParam::Of(1.0f, -2.0f, -3.0f, -4.0f)));
    EXPECT_EQ(Bits(TypeParam::IfEqual(left, right, yes, no)), Bits(TypeParam::Of(-1.0f, -2.0f, 3.0f, -4.0f)));
}

} // namespace
