#pragma once

#include <algorithm>
#include <iterator>
#include <vector>

namespace mobu_host
{

/// Reserves space for one more item, so that push_back cannot fail.
template <class T>
void MakeRoom(std::vector<T>& list)
{
    if (list.size() == list.capacity())
        list.reserve(2 * list.size() + 8);
}

/// Erases the last occurrence: new objects are mostly deleted or moved soon after they came.
template <class T>
void EraseLast(std::vector<T*>& list, const T* item)
{
    const auto found = std::find(list.rbegin(), list.rend(), item);
    if (found != list.rend())
        list.erase(std::next(found).base());
}

} // namespace mobu_host
