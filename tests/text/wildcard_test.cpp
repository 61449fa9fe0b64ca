#include "text/wildcard.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

struct Case
{
    const char* pattern;
    const char* name;
    bool matches;
};

constexpr Case kCases[] = {
    {"walk*", "walk", true},
    {"walk*", "walk_fast", true},
    {"walk*", "a walk", false},
    {"*walk", "a walk", true},
    {"*a*b*", "xxaxxbxx", true},
    {"*a*b*", "xxbxxaxx", false},
    {"a*b", "ab", true},
    {"a**b", "axb", true},
    {"*", "", true},
    {"", "", true},
    {"", "a", false},
    {"?", "", false},
    {"?", "a", true},
    {"?", "\xC3\xA9", true}, // one character of two bytes
    {"?", "\xFF", true},     // a byte that is no character
    {"??", "\xC3\xA9", false},
    {"[\xC3\xA0-\xC3\xAF]", "\xC3\xA9", true},
    {"\xFF*", "\xFF\xFE", true},
    {"\xFF", "\xFE", false},
    {"\xFF", "\xEF\xBF\xBD", false}, // the replacement character itself
    {"Walk", "walk", false},
    {"[a-c]x", "bx", true},
    {"[a-c]x", "dx", false},
    {"[!a-c]x", "dx", true},
    {"[!a-c]x", "bx", false},
    {"[^a]", "^", true}, // only "!" negates
    {"[^a]", "b", false},
    {"[c-a]", "b", false},
    {"[]-]", "]", true},
    {"[]-]", "-", true},
    {"[]-]", "a", false},
    {"[!]]", "]", false},
    {"[!]]", "a", true},
    {"[-a]", "-", true},
    {"[*][?][[]", "*?[", true},
    {"[*]", "a", false},
    {"a[b", "a[b", true}, // never closed
    {"a[b", "ab", false},
    {"[]", "[]", true},
    {"[!]", "[!]", true},
    {"a\\*", "a\\b", true},
    {"a.b", "axb", false},
};

TEST(Wildcard, MatchesWholeNames)
{
    for (const Case& c : kCases)
        EXPECT_EQ(Wildcard(c.pattern).Matches(c.name), c.matches) << c.pattern << " and " << c.name;
}

TEST(Wildcard, KnowsJustNames)
{
    for (const char* pattern : {"*", "a?", "[a]", "x[!y]z", "[[]"})
        EXPECT_TRUE(Wildcard(pattern).HasWildcards()) << pattern;
    for (const char* pattern : {"", "walk", "a[b", "[]", "]", "a-b!", "\\"})
        EXPECT_FALSE(Wildcard(pattern).HasWildcards()) << pattern;
}

// Trying all ways of sharing out the text would take longer than anything lasts.
TEST(Wildcard, ManyStarsEnd)
{
    std::string pattern;
    for (int i = 0; i < 50; ++i)
        pattern += "*a";
    EXPECT_FALSE(Wildcard(pattern + "b").Matches(std::string(5000, 'a')));
    EXPECT_TRUE(Wildcard(pattern).Matches(std::string(5000, 'a')));
}

} // namespace
