#pragma once

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace mobu_host::collada
{

/// What ids lead to. Where an id is given twice, the first counts.
template <typename Value>
class IdTable
{
public:
    void Add(std::string_view id, Value value)
    {
        if (!id.empty())
            entries_.emplace_back(id, value);
    }

    /// After the last Add, before the first Find.
    void Sort()
    {
        std::stable_sort(entries_.begin(), entries_.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
    }

    const Value* Find(std::string_view id) const
    {
        const auto found =
            std::lower_bound(entries_.begin(), entries_.end(), id,
                             [](const auto& entry, std::string_view sought) { return entry.first < sought; });
        return found != entries_.end() && found->first == id && !id.empty() ? &found->second : nullptr;
    }

private:
    std::vector<std::pair<std::string_view, Value>> entries_;
};

} // namespace mobu_host::collada
