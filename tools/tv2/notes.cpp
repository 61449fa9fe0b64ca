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

} // namespace tv2
