#include "host/import/base/parse_error.h"
#include "host/import/fbx/record_frames.h"

#include <algorithm>
#include <charconv>

namespace mobu_host::fbx
{
namespace
{

constexpr std::size_t kLongestName = 0xFFFF;

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

bool EndsWord(char c)
{
    return IsBlank(c) || c == '\n' || c == ',' || c == '{' || c == '}' || c == ';' || c == '"';
}

bool BeginsNumber(char c)
{
    return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.';
}

std::size_t SkipBlanks(std::string_view file, std::size_t at)
{
    while (at < file.size() && IsBlank(file[at]))
        ++at;
    return at;
}

class TextFrameReader
{
public:
    TextFrameReader(std::string_view file, std::vector<RecordFrame>& frames) : file_(file), frames_(frames) {}

    void Read()
    {
        open_.push_back({0, 0, 0});
        std::size_t at = file_.starts_with("\xEF\xBB\xBF") ? 3 : 0;
        for (at = SkipSpace(file_, at, file_.size()); at < file_.size();
             at = SkipSpace(file_, at, file_.size()))
        {
            if (file_[at] == '}')
            {
                if (open_.size() == 1)
                    throw ParseError(at, "a brace closes what none opened");
                open_.pop_back();
                ++at;
                continue;
            }
            at = ReadRecord(at);
        }
        if (open_.size() > 1)
            throw ParseError(open_.back().offset, "the file ends inside a record");
    }

private:
    struct Level
    {
        std::uint32_t record;
        std::uint32_t last_child;
        std::size_t offset;
    };

    std::size_t ReadRecord(std::size_t at)
    {
        const std::size_t colon = file_.find_first_of(":\n{}\"", at);
        if (colon == std::string_view::npos || file_[colon] != ':')
            throw ParseError(at, "a record has no name");
        if (colon - at > kLongestName)
            throw ParseError(at, "a record's name is too long");
        RecordFrame frame;
        frame.name = static_cast<std::uint32_t>(at);
        frame.name_size = static_cast<std::uint16_t>(colon - at);
        at = BeginOfValues(colon + 1);
        if (at < file_.size() && file_[at] == ',') // "Content: ," and its text in the next line
            at = SkipSpace(file_, at + 1, file_.size());
        frame.values = frame.values_end = static_cast<std::uint32_t>(at);
        for (Value value; !BeginsRecord(at) && ScanTextValue(file_, at, file_.size(), value);)
        {
            ++frame.value_count;
            frame.values_end = static_cast<std::uint32_t>(at);
            const std::size_t comma = SkipSpace(file_, at, file_.size());
            if (comma == file_.size() || file_[comma] != ',')
                break;
            at = SkipSpace(file_, comma + 1, file_.size());
        }
        Level& level = open_.back();
        const std::uint32_t record = AppendFrame(frames_, frame, level.record, level.last_child);
        at = SkipSpace(file_, at, file_.size());
        if (at < file_.size() && file_[at] == '{')
        {
            if (open_.size() > kDeepestRecord)
                throw ParseError(at,
                                 "records are nested more than " + std::to_string(kDeepestRecord) + " deep");
            open_.push_back({record, 0, at});
            ++at;
        }
        return at;
    }

    // A name and its colon, where a comma had promised one more value.
    bool BeginsRecord(std::size_t at) const
    {
        const std::size_t end = file_.find_first_of(":,;\n{}\"", at);
        return end != std::string_view::npos && file_[end] == ':';
    }

    // Values are on the line of the name; numbers may begin on the next.
    std::size_t BeginOfValues(std::size_t at) const
    {
        at = SkipBlanks(file_, at);
        if (at == file_.size() || file_[at] != '\n')
            return at;
        const std::size_t next = SkipSpace(file_, at, file_.size());
        if (next == file_.size() || !BeginsNumber(file_[next]))
            return at;
        const std::size_t end = std::min(file_.find_first_of(":,\n{}", next), file_.size());
        return end < file_.size() && file_[end] == ':' ? at : next;
    }

    std::string_view file_;
    std::vector<RecordFrame>& frames_;
    std::vector<Level> open_;
};

// From the comment in the first line, "; FBX 6.1.0 project file"; the header's record is in the tree.
unsigned VersionOfComment(std::string_view file)
{
    const std::size_t line = std::min(file.find('\n'), std::size_t{200});
    const std::string_view first = file.substr(0, line);
    const std::size_t at = first.find("FBX ");
    unsigned major = 0, minor = 0;
    if (at == std::string_view::npos)
        return 0;
    const char* const end = first.data() + first.size();
    const auto [dot, error] = std::from_chars(first.data() + at + 4, end, major);
    if (error != std::errc() || dot == end || *dot != '.' || major > 9)
        return 0;
    std::from_chars(dot + 1, end, minor);
    return major * 1000 + std::min(minor, 9U) * 100;
}

} // namespace

std::size_t SkipSpace(std::string_view file, std::size_t at, std::size_t end)
{
    while (at < end)
        if (file[at] == ';')
            at = std::min(file.find('\n', at), end);
        else if (IsBlank(file[at]) || file[at] == '\n')
            ++at;
        else
            break;
    return at;
}

bool ScanTextValue(std::string_view file, std::size_t& at, std::size_t end, Value& value)
{
    if (at >= end)
        return false;
    if (file[at] == '"')
    {
        const std::size_t close = file.find('"', at + 1);
        if (close >= end)
            throw ParseError(at, "a text does not end");
        value = Value('S', file.substr(at + 1, close - at - 1));
        at = close + 1;
        return true;
    }
    std::size_t stop = at;
    while (stop < end && !EndsWord(file[stop]))
        ++stop;
    if (stop == at)
        return false;
    const std::string_view word = file.substr(at, stop - at);
    at = stop;
    if (word[0] == '*')
        value = Value('*', word.substr(1));
    else
        value = Value(BeginsNumber(word[0]) ? 'N' : 'W', word);
    return true;
}

unsigned ReadTextFrames(std::string_view file, std::vector<RecordFrame>& frames)
{
    // Each record has its colon.
    frames.reserve(frames.size() + static_cast<std::size_t>(std::count(file.begin(), file.end(), ':')));
    TextFrameReader(file, frames).Read();
    return VersionOfComment(file);
}

} // namespace mobu_host::fbx
