#include "tev2_playback/detail/name_table.h"

#include "tev2_loader/io/wide_string.h"
#include "tev2_playback/detail/hash.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace TEV2_PLAYBACK
{

namespace
{

/// Of a table with a power of two of buckets.
std::size_t BucketOf(std::string_view name, std::size_t buckets)
{
    return (HashOf(name.data(), name.size()) >> 32) & (buckets - 1);
}

} // namespace

int NameTable::Find(std::string_view utf8) const
{
    const std::size_t bucket = BucketOf(utf8, ends.size());
    const auto begin = names.begin() + (bucket == 0 ? 0 : static_cast<std::ptrdiff_t>(ends[bucket - 1]));
    const auto end = names.begin() + static_cast<std::ptrdiff_t>(ends[bucket]);
    const auto found = std::lower_bound(begin, end, utf8,
                                        [this](std::uint32_t name, std::string_view wanted)
                                        { return (*this)[name] < wanted; });
    return found != end && (*this)[*found] == utf8 ? static_cast<int>(*found) : -1;
}

void NameLayout::Add(std::u16string_view stored)
{
    const std::size_t begin = text_.size();
    text_.resize(begin + stored.size());
    char16_t all = 0;
    for (std::size_t at = 0; at < stored.size(); ++at)
    {
        all = static_cast<char16_t>(all | stored[at]);
        text_[begin + at] = static_cast<char>(stored[at]);
    }
    if (all >= 0x80)
        text_.replace(begin, stored.size(), TEV2_LOADER::ReadableText(stored));
    text_ += '\0';
    begins_.push_back(text_.size());
}

void NameLayout::TakeArrays(BlockPlan& plan, NameTable& table) const
{
    const std::size_t count = begins_.size() - 1;
    table.text = plan.Take<char>(text_.size());
    table.begins = plan.Take<std::size_t>(count + 1);
    table.ends = plan.Take<std::uint32_t>(std::bit_ceil(count));
    table.names = plan.Take<std::uint32_t>(count);
}

void NameLayout::Fill(NameTable& table) const
{
    std::memcpy(table.text.data(), text_.data(), text_.size());
    std::ranges::copy(begins_, table.begins.begin());

    const std::size_t count = table.names.size();
    std::vector<std::uint32_t> buckets(count);
    std::ranges::fill(table.ends, 0u);
    for (std::size_t name = 0; name < count; ++name)
    {
        buckets[name] = static_cast<std::uint32_t>(BucketOf(table[name], table.ends.size()));
        ++table.ends[buckets[name]];
    }
    std::uint32_t before = 0;
    for (std::uint32_t& end : table.ends)
        before += std::exchange(end, before);
    for (std::uint32_t name = 0; name < count; ++name)
        table.names[table.ends[buckets[name]]++] = name;

    // Sorted, not searched one by one: names can be made to share a bucket.
    const auto comes_first = [&table](std::uint32_t left, std::uint32_t right)
    {
        const int order = table[left].compare(table[right]);
        return order != 0 ? order < 0 : left < right;
    };
    auto begin = table.names.begin();
    for (const std::uint32_t bucket_end : table.ends)
    {
        const auto end = table.names.begin() + static_cast<std::ptrdiff_t>(bucket_end);
        if (end - begin > 1)
            std::sort(begin, end, comes_first);
        begin = end;
    }
}

} // namespace TEV2_PLAYBACK
