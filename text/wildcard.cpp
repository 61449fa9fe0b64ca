#include "text/wildcard.h"

#include "text/utf8.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <optional>

namespace
{

constexpr char32_t kFirstBadByte = 0x110000; // beyond Unicode

std::vector<char32_t> CharactersOf(std::string_view text)
{
    std::vector<char32_t> characters;
    characters.reserve(text.size());
    while (!text.empty())
    {
        const auto byte = static_cast<unsigned char>(text.front());
        const bool valid = Utf8Length(text) > 0;
        const char32_t character = TakeCharacter(text);
        characters.push_back(valid ? character : kFirstBadByte + byte);
    }
    return characters;
}

/// Where the "]" is that closes the brackets opened before `first`.
std::optional<std::size_t> EndOfBrackets(const std::vector<char32_t>& pattern, std::size_t first)
{
    for (std::size_t at = first + 1; at < pattern.size(); ++at)
        if (pattern[at] == U']')
            return at;
    return std::nullopt;
}

} // namespace

Wildcard::Wildcard(std::string_view pattern)
{
    const std::vector<char32_t> characters = CharactersOf(pattern);
    for (std::size_t at = 0; at < characters.size(); ++at)
    {
        Element& element = elements_.emplace_back();
        const char32_t character = characters[at];
        element.any_text = character == U'*';
        element.negated = character == U'?'; // in none of no ranges
        if (element.any_text || element.negated)
        {
            has_wildcards_ = true;
            continue;
        }
        const bool negated = character == U'[' && at + 1 < characters.size() && characters[at + 1] == U'!';
        std::size_t item = at + (negated ? 2 : 1);
        const std::optional<std::size_t> end =
            character == U'[' ? EndOfBrackets(characters, item) : std::nullopt;
        if (!end)
        {
            element.ranges.emplace_back(character, character);
            continue;
        }
        has_wildcards_ = true;
        element.negated = negated;
        while (item < *end)
        {
            const bool range = item + 2 < *end && characters[item + 1] == U'-';
            element.ranges.emplace_back(characters[item], characters[item + (range ? 2 : 0)]);
            item += range ? 3 : 1;
        }
        at = *end;
    }
}

bool Wildcard::Element::Takes(char32_t character) const
{
    const bool found = std::ranges::any_of(ranges, [character](const auto& range)
                                           { return range.first <= character && character <= range.second; });
    return found != negated;
}

bool Wildcard::Matches(std::string_view name) const
{
    constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
    const std::vector<char32_t> characters = CharactersOf(name);
    std::size_t element = 0;
    std::size_t last_star = kNone;
    std::size_t star_end = 0; // of the text that the last star takes
    for (std::size_t at = 0; at < characters.size();)
    {
        if (element < elements_.size() && elements_[element].any_text)
        {
            last_star = element++;
            star_end = at;
        }
        else if (element < elements_.size() && elements_[element].Takes(characters[at]))
        {
            ++element;
            ++at;
        }
        else if (last_star != kNone)
        {
            element = last_star + 1;
            at = ++star_end;
        }
        else
        {
            return false;
        }
    }
    return std::all_of(elements_.begin() + static_cast<std::ptrdiff_t>(element), elements_.end(),
                       [](const Element& rest) { return rest.any_text; });
}
