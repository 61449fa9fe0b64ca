#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace TEV2_LOADER::file_system
{

/// The process in `prefix`<process>-<number>`suffix`; none when `name` is no such name.
inline std::optional<unsigned long> ProcessInName(std::string_view name, std::string_view prefix,
                                                  std::string_view suffix)
{
    if (name.size() < prefix.size() + suffix.size() || !name.starts_with(prefix) || !name.ends_with(suffix))
        return std::nullopt;
    name.remove_prefix(prefix.size());
    name.remove_suffix(suffix.size());
    unsigned long process = 0;
    unsigned long number = 0;
    const char* const end = name.data() + name.size();
    const auto first = std::from_chars(name.data(), end, process);
    if (first.ec != std::errc() || first.ptr == end || *first.ptr != '-')
        return std::nullopt;
    const auto second = std::from_chars(first.ptr + 1, end, number);
    return second.ec == std::errc() && second.ptr == end ? std::optional(process) : std::nullopt;
}

} // namespace TEV2_LOADER::file_system
