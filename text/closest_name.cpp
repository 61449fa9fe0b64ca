#include "text/closest_name.h"

#include "text/printable.h"

#include <algorithm>
#include <vector>

namespace
{

constexpr std::size_t kLettersPerError = 3;
constexpr std::size_t kLongestCompared = 256; // the work grows with the square

char Folded(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool SameLetter(char a, char b)
{
    return Folded(a) == Folded(b);
}

/// Insertions, deletions, replacements and swaps of neighbours that make `b` of `a`.
std::size_t EditDistance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> two_above(b.size() + 1);
    std::vector<std::size_t> above(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        above[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i)
    {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j)
        {
            const std::size_t replaced = above[j - 1] + (SameLetter(a[i - 1], b[j - 1]) ? 0 : 1);
            row[j] = std::min({replaced, above[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && SameLetter(a[i - 1], b[j - 2]) && SameLetter(a[i - 2], b[j - 1]))
                row[j] = std::min(row[j], two_above[j - 2] + 1);
        }
        two_above.swap(above);
        above.swap(row);
    }
    return above[b.size()];
}

} // namespace

std::string_view ClosestName(std::string_view unknown, std::span<const std::string> known)
{
    std::string_view closest;
    std::size_t allowed = std::max<std::size_t>(unknown.size() / kLettersPerError, 1) + 1; // exclusive
    if (unknown.empty() || unknown.size() > kLongestCompared)
        return closest;
    for (const std::string_view name : known)
    {
        const std::size_t least =
            std::max(name.size(), unknown.size()) - std::min(name.size(), unknown.size());
        const std::size_t distance = least < allowed ? EditDistance(unknown, name) : allowed;
        // What has no letter in common is no misspelling: "A" for "B".
        if (distance < allowed && distance < std::max(unknown.size(), name.size()))
        {
            closest = name;
            allowed = distance;
        }
    }
    return closest;
}

std::string DidYouMean(std::string_view unknown, std::span<const std::string> known)
{
    const std::string_view closest = ClosestName(unknown, known);
    return closest.empty() ? std::string() : " (did you mean \"" + OneLine(closest) + "\"?)";
}

std::string DidYouMeanOr(std::string_view unknown, std::span<const std::string> known,
                         const std::string& otherwise)
{
    const std::string meant = DidYouMean(unknown, known);
    return meant.empty() ? otherwise : meant;
}
