#include "host/import/base/parse_error.h"
#include "host/import/fbx/little_endian.h"
#include "host/import/fbx/record_frames.h"

namespace mobu_host::fbx
{
namespace
{

constexpr std::size_t kHeaderSize = 27; // magic, two bytes, version
constexpr unsigned kFirstWideVersion = 7500;

struct Header
{
    std::uint64_t end;
    std::uint64_t value_count;
    std::uint64_t values_size;
    std::size_t name;
    std::uint8_t name_size;
};

class BinaryFrameReader
{
public:
    BinaryFrameReader(std::string_view file, bool wide, std::vector<RecordFrame>& frames)
        : file_(file), wide_(wide), frames_(frames)
    {
    }

    void Read()
    {
        std::size_t at = kHeaderSize;
        open_.push_back({0, 0, file_.size(), 0});
        while (!open_.empty())
        {
            Level& level = open_.back();
            if (at == level.end && level.record != 0)
            {
                open_.pop_back();
                continue;
            }
            const Header header = ReadHeader(at, level.end);
            if (header.end == 0) // closes its list
            {
                at = header.name + header.name_size;
                if (level.record != 0 && at != level.end)
                    throw ParseError(at, "the list of a record's children ends before the record does");
                open_.pop_back();
                continue;
            }
            at = Open(at, header, level);
        }
    }

private:
    struct Level
    {
        std::uint32_t record;
        std::uint32_t last_child;
        std::size_t end;
        std::size_t begin;
    };

    Header ReadHeader(std::size_t at, std::size_t end) const
    {
        const std::size_t word = wide_ ? 8 : 4;
        const std::size_t size = 3 * word + 1;
        if (end - at < size)
            throw ParseError(at, "the file ends inside a record's header");
        const auto number = [&](std::size_t i)
        {
            return wide_ ? LittleEndian<std::uint64_t>(file_, at + i * word)
                         : LittleEndian<std::uint32_t>(file_, at + i * word);
        };
        Header header{number(0), number(1), number(2), at + size,
                      static_cast<std::uint8_t>(file_[at + size - 1])};
        if (end - header.name < header.name_size)
            throw ParseError(at, "a record's name leaves its list");
        // Some write records without their end: those have no children, so that their values end them.
        if (header.end == 0 && (header.value_count != 0 || header.values_size != 0 || header.name_size != 0))
        {
            const std::size_t values = header.name + header.name_size;
            if (header.values_size > end - values)
                throw ParseError(at, "the values of a record leave its list");
            header.end = values + header.values_size;
        }
        return header;
    }

    std::size_t Open(std::size_t at, const Header& header, Level& level)
    {
        const std::size_t values = header.name + header.name_size;
        if (header.end > level.end)
            throw ParseError(at, "a record ends after the list that holds it");
        if (header.end < values || header.values_size > header.end - values)
            throw ParseError(at, "the values of a record leave it");
        if (header.value_count > header.values_size)
            throw ParseError(at, "a record has more values than bytes");
        RecordFrame frame;
        frame.name = static_cast<std::uint32_t>(header.name);
        frame.name_size = header.name_size;
        frame.values = static_cast<std::uint32_t>(values);
        frame.values_end = static_cast<std::uint32_t>(values + header.values_size);
        frame.value_count = static_cast<std::uint32_t>(header.value_count);
        const std::uint32_t record = AppendFrame(frames_, frame, level.record, level.last_child);
        if (frame.values_end < header.end)
        {
            if (open_.size() > kDeepestRecord)
                throw ParseError(at,
                                 "records are nested more than " + std::to_string(kDeepestRecord) + " deep");
            open_.push_back({record, 0, static_cast<std::size_t>(header.end), at});
        }
        return frame.values_end;
    }

    std::string_view file_;
    bool wide_;
    std::vector<RecordFrame>& frames_;
    std::vector<Level> open_;
};

} // namespace

unsigned ReadBinaryFrames(std::string_view file, std::vector<RecordFrame>& frames)
{
    if (file.size() < kHeaderSize)
        throw ParseError(file.size(), "the file ends inside its header");
    const auto version = LittleEndian<std::uint32_t>(file, kHeaderSize - 4);
    if (version < 6000 || version >= 8000)
        throw ParseError(kHeaderSize - 4, "FBX version " + std::to_string(version) +
                                              " is not read (6000 to 7999, which is 6.0 to 7.x, are)");
    BinaryFrameReader(file, version >= kFirstWideVersion, frames).Read();
    return version;
}

} // namespace mobu_host::fbx
