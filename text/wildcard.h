#pragma once

#include <string_view>
#include <utility>
#include <vector>

/// A pattern for whole names: "*" is any text, "?" any character, "[a-z]" one of these characters, "[!a-z]" one that is
/// not. Brackets make a character stand for itself: "[*]", "[?]", "[[]"; "]" comes first and "-" first or last
/// ("[]-]"). A "[" that is never closed is itself, and so is a backslash. Upper and lower case differ. A character is
/// one of UTF-8, or a byte that is part of none.
///
///     Wildcard("walk*").Matches("walk_fast"); // true
///
/// Matching takes at most time proportional to the product of both lengths.
class Wildcard
{
public:
    explicit Wildcard(std::string_view pattern);

    bool Matches(std::string_view name) const;

    /// False when the pattern is just a name: no "*", no "?" and no closed brackets.
    bool HasWildcards() const { return has_wildcards_; }

private:
    /// One character of a name, or any number of them.
    struct Element
    {
        bool any_text = false;
        bool negated = false;                                ///< a character that is in none of the ranges
        std::vector<std::pair<char32_t, char32_t>> ranges{}; ///< both ends included

        bool Takes(char32_t character) const;
    };

    std::vector<Element> elements_;
    bool has_wildcards_ = false;
};
