#pragma once

#include "tev2_playback/detail/block_plan.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace TEV2_PLAYBACK
{

/// Names as UTF-8, and which of them are the same as a given one.
struct NameTable
{
    std::span<char> text;           ///< of all names, each followed by a zero
    std::span<std::size_t> begins;  ///< of each name in the text, then its size
    std::span<std::uint32_t> ends;  ///< of each bucket in the entries; a power of two
    std::span<std::uint32_t> names; ///< the entries of the buckets: in each ordered by text, then by index

    std::string_view operator[](std::size_t name) const
    {
        return {&text[begins[name]], begins[name + 1] - begins[name] - 1};
    }

    /// The first name with this text, or -1.
    int Find(std::string_view utf8) const;
};

/// Collects names and lays a table of them out.
class NameLayout
{
public:
    explicit NameLayout(std::size_t count) { begins_.reserve(count + 1); }

    /// The next name, as stored in a file.
    void Add(std::u16string_view stored);

    void TakeArrays(BlockPlan& plan, NameTable& table) const;
    void Fill(NameTable& table) const;

private:
    std::string text_;
    std::vector<std::size_t> begins_{0};
};

} // namespace TEV2_PLAYBACK
