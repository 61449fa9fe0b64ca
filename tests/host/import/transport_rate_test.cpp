#include "host/import/transport_rate.h"

#include <gtest/gtest.h>

namespace
{

using mobu_host::KeyTimes;
using mobu_host::TakeDescription;

TakeDescription TakeOf(std::vector<double> keys, double stop)
{
    TakeDescription take;
    take.stop = stop;
    take.keys.push_back(std::make_shared<const std::vector<double>>(std::move(keys)));
    return take;
}

TakeDescription TakeAt(double rate, int frames, bool single_precision)
{
    std::vector<double> keys;
    for (int frame = 0; frame <= frames; ++frame)
        keys.push_back(single_precision ? static_cast<double>(static_cast<float>(frame / rate))
                                        : frame / rate);
    const double stop = keys.back();
    return TakeOf(std::move(keys), stop);
}

TEST(TransportRate, TakesKeyedAtACommonRateGetIt)
{
    for (const double whole : {24.0, 25.0, 30.0, 48.0, 50.0, 60.0, 100.0, 120.0, 240.0})
    {
        for (const bool single_precision : {false, true})
        {
            EXPECT_EQ(mobu_host::LowestRateOf({TakeAt(whole, 7, single_precision)}), whole);
            EXPECT_EQ(mobu_host::LowestRateOf({TakeAt(whole, 200'000, single_precision)}), whole);
        }
    }
    for (const double whole : {24.0, 30.0, 48.0, 60.0, 120.0, 240.0})
        EXPECT_DOUBLE_EQ(mobu_host::LowestRateOf({TakeAt(whole / 1.001, 300, true)}).value_or(0.0),
                         whole / 1.001);
}

TEST(TransportRate, IsTheLowestThatAllTakesFitWithinAThousandthOfAFrame)
{
    struct Case
    {
        const char* what;
        std::vector<TakeDescription> takes;
        std::optional<double> rate;
    };
    const double frame = 1.0 / 24.0;
    const Case cases[] = {
        {"no take", {}, 30.0},
        {"no key", {TakeOf({}, 0.37)}, 30.0},
        {"a pose at 0", {TakeOf({0.0}, 0.0)}, 30.0},
        {"one second tells nothing but that", {TakeOf({0.0, 1.0}, 1.0)}, 24.0},
        {"takes of 24 and 30", {TakeAt(24.0, 24, false), TakeAt(30.0, 30, false)}, 120.0},
        {"takes of 25 and 30", {TakeAt(25.0, 25, false), TakeAt(30.0, 30, false)}, std::nullopt},
        {"a key barely on its frame", {TakeOf({5.0009 * frame}, 0.0)}, 24.0},
        {"a key barely off", {TakeOf({5.0011 * frame, 24 * frame}, 0.0)}, std::nullopt},
        {"an end off", {TakeOf({0.0, frame}, 0.0301)}, std::nullopt},
        {"below zero", {TakeOf({-0.2, -0.04}, -0.04)}, 25.0},
    };
    for (const Case& item : cases)
        EXPECT_EQ(mobu_host::LowestRateOf(item.takes), item.rate) << item.what;
}

} // namespace
