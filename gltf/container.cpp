#include "gltf/container.h"

#include "gltf/error.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace gltf
{
namespace
{

constexpr std::string_view kMagic = "glTF";
constexpr std::string_view kJsonChunk = "JSON";
constexpr std::string_view kBinaryChunk("BIN\0", 4);
constexpr std::size_t kFileHeader = 12; // magic, version, length of the file
constexpr std::size_t kChunkHeader = 8; // length, kind

std::size_t Word(std::string_view bytes, std::size_t offset)
{
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i)
        word |= std::uint32_t{static_cast<unsigned char>(bytes[offset + i])} << (8 * i);
    return word;
}

std::string_view TakeChunk(std::string_view& rest, std::string_view kind, const std::string& what)
{
    if (rest.size() < kChunkHeader)
        throw Error("the file ends inside the header of " + what);
    if (rest.substr(4, 4) != kind)
        throw Error("the first chunk of the file is not its JSON");
    const std::size_t length = Word(rest, 0);
    rest.remove_prefix(kChunkHeader);
    if (length > rest.size())
        throw Error("the file ends inside " + what);
    const std::string_view chunk = rest.substr(0, length);
    rest.remove_prefix(length);
    return chunk;
}

} // namespace

Container OpenContainer(std::string_view bytes)
{
    if (!bytes.starts_with(kMagic))
        return {bytes, std::nullopt};
    if (bytes.size() < kFileHeader)
        throw Error("the file ends inside its header");
    if (Word(bytes, 4) != 2)
        throw Error("glTF version " + std::to_string(Word(bytes, 4)) + " is not read, only 2");
    std::string_view rest = bytes.substr(kFileHeader);
    Container container;
    container.json = TakeChunk(rest, kJsonChunk, "its JSON chunk");
    // Other chunks may follow, which may be ignored.
    if (rest.size() >= kChunkHeader && rest.substr(4, 4) == kBinaryChunk)
        container.binary = TakeChunk(rest, kBinaryChunk, "its binary chunk");
    return container;
}

} // namespace gltf
