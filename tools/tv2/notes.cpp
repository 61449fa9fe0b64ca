#include "tools/tv2/notes.h"

#include "tools/tv2/text.h"

#include <limits>

namespace tv2
{

void PrintNotes(std::ostream& out, const std::vector<std::string>& notes, std::size_t columns)
{
    const std::size_t width = columns > 0 ? columns : std::numeric_limits<std::size_t>::max();
    constexpr std::string_view kHead = "note: ";
    for (const std::string& note : notes)
        out << Wrapped(std::string(kHead) + Printable(note), width, kHead.size()) << '\n';
}

std::string OutsideRangeNote(float time, const TEV2_LOADER::TEV2_FLOAT32_RANGE& range)
{
    return FloatText(time) + " s is outside the file's time range, " + FloatText(range.minimum) + " to " +
           FloatText(range.maximum) +
           " s: tracks show their first key before they begin and their last key after they end";
}

} // namespace tv2
