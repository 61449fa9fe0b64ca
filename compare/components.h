#pragma once

#include <tuple>
#include <type_traits>
#include <vector>

namespace tev2_compare
{

/// The numbers of a value of a track or field: its components in order, or itself.
std::vector<double> ComponentsOf(const auto& value)
{
    std::vector<double> numbers;
    if constexpr (std::is_arithmetic_v<std::remove_cvref_t<decltype(value)>>)
        numbers.push_back(static_cast<double>(value));
    else
        std::apply([&numbers](const auto&... component)
                   { (numbers.push_back(static_cast<double>(component)), ...); },
                   value.Components());
    return numbers;
}

} // namespace tev2_compare
