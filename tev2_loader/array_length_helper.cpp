#include "tev2_loader/array_length_helper.h"

#include "tev2_loader/records/archives.h"
#include "tev2_loader/tev2.h"

#include <algorithm>

namespace TEV2_LOADER
{

TEV2_ARRAY_LENGTH_HELPER::TEV2_ARRAY_LENGTH_HELPER(const TEV2& scene)
{
    auto count = counts.begin();
    VisitListsBy<&TEV2_LIST::count>(scene, [&count](const TEV2_LIST&, const auto& array)
                                    { *count++ = static_cast<std::uint32_t>(array.size()); });
}

bool TEV2_ARRAY_LENGTH_HELPER::Reserve(TEV2& scene, TEV2_MEMORY_CURSOR& cursor) const
{
    bool untouched = true;
    VisitListsBy<&TEV2_LIST::count>(scene, [&untouched](const TEV2_LIST&, const auto& array)
                                    { untouched = untouched && array.capacity() == 0; });
    if (!untouched)
        return true;
    std::size_t most = cursor.Remaining() / kChunkHeader;
    auto count = counts.begin();
    VisitListsBy<&TEV2_LIST::count>(scene,
                                    [&](const TEV2_LIST&, auto& array)
                                    {
                                        const std::size_t room = std::min<std::size_t>(*count++, most);
                                        most -= room;
                                        if (cursor.TakeMemory(room * sizeof array[0]))
                                            array.reserve(room);
                                    });
    return !cursor.Failed();
}

bool TEV2_ARRAY_LENGTH_HELPER::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    counts = {};
    return LoadFields(*this, cursor, version);
}

bool TEV2_ARRAY_LENGTH_HELPER::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveFields(*this, writer);
}

} // namespace TEV2_LOADER
