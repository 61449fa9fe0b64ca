#include "tev2_loader/serialisation/wide_string.h"

#include "tev2_loader/serialisation/file_stream.h"
#include "tev2_loader/serialisation/memory_cursor.h"

#include <algorithm>
#include <cstdint>

namespace TEV2_LOADER
{

TEV2_WIDE_STRING TEV2_WIDE_STRING::FromBytes(std::string_view bytes)
{
    std::u16string units;
    units.reserve(bytes.size());
    for (const char byte : bytes)
        units += static_cast<char16_t>(static_cast<unsigned char>(byte));
    return TEV2_WIDE_STRING(std::move(units));
}

void WriteWideString(TEV2_FILE_STREAM& stream, const TEV2_WIDE_STRING& string)
{
    const std::size_t length = std::min<std::size_t>(string.Text().size(), UINT16_MAX);
    const std::uint16_t count = static_cast<std::uint16_t>(length);
    stream.Write(&count, sizeof count);
    stream.Write(string.Text().data(), length * sizeof(char16_t));
}

void ReadWideString(TEV2_MEMORY_CURSOR& cursor, TEV2_WIDE_STRING& string)
{
    const std::uint32_t declared = cursor.ReadU16();
    const std::size_t present = std::min<std::size_t>(declared, cursor.Remaining() / sizeof(char16_t));
    std::u16string units(present, u'\0');
    cursor.ReadBlock(units.data(), present * sizeof(char16_t));
    string = TEV2_WIDE_STRING(std::move(units));
    if (present < declared)
    {
        cursor.current = cursor.end;
        cursor.Warn(TEV2_LOAD_CODE::StringClamped, std::to_string(declared) + " units",
                    std::to_string(present) + " units");
    }
}

} // namespace TEV2_LOADER
