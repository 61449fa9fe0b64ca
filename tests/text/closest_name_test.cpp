#include "text/closest_name.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

TEST(ClosestName, IsTheNameThatWasProbablyMeant)
{
    const std::vector<std::string> known = {"Dance", "Walking", "WalkJump", "ns:Leg", "Idle", "A"};
    const struct
    {
        const char* unknown;
        const char* closest;
    } cases[] = {
        {"Dnace", "Dance"},       // two letters swapped
        {"dance", "Dance"},       // another case
        {"Dancee", "Dance"},      // one too many
        {"Wlking", "Walking"},    // one too few
        {"WalkJunk", "WalkJump"}, // two of eight replaced
        {"Xdle", "Idle"},
        {"Leg", ""},   // three of three would be inserted
        {"Dxxce", ""}, // two of five replaced
        {"legs", ""},
        {"ns:Lge", "ns:Leg"},
        {"B", ""}, // nothing in common with "A"
        {"", ""},
        {"something else", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ClosestName(c.unknown, known), c.closest) << c.unknown;
}

TEST(ClosestName, GoesIntoAMessageInQuotes)
{
    const std::vector<std::string> known = {"Dance"};
    EXPECT_EQ(DidYouMean("Dnace", known), " (did you mean \"Dance\"?)");
    EXPECT_EQ(DidYouMean("Walk", known), "");
    EXPECT_EQ(DidYouMean("Danc", std::vector<std::string>{"Danc\n"}), " (did you mean \"Danc\\n\"?)");
    EXPECT_EQ(DidYouMeanOr("Dnace", known, "; all"), " (did you mean \"Dance\"?)");
    EXPECT_EQ(DidYouMeanOr("Walk", known, "; all"), "; all");
}

} // namespace
