#include "gltf/uri.h"

#include "gltf/error.h"
#include "text/base64.h"

#include <algorithm>
#include <cstdint>

namespace gltf
{
namespace
{

constexpr std::string_view kBase64Mark = ";base64";

std::string FromBase64(std::string_view text)
{
    std::string bytes;
    if (const std::string_view wrong = ReadBase64(text, bytes); !wrong.empty())
        throw Error(std::string(wrong));
    return bytes;
}

bool IsLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

int HexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// A '%' without two digits after it is itself: not all programs escape names.
std::string WithoutEscapes(std::string_view uri)
{
    std::string text;
    for (std::size_t i = 0; i < uri.size(); ++i)
    {
        const bool escaped =
            uri[i] == '%' && i + 2 < uri.size() && HexValue(uri[i + 1]) >= 0 && HexValue(uri[i + 2]) >= 0;
        text.push_back(escaped ? static_cast<char>(static_cast<unsigned char>(HexValue(uri[i + 1]) * 16 +
                                                                              HexValue(uri[i + 2])))
                               : uri[i]);
        i += escaped ? 2 : 0;
    }
    return text;
}

bool HasStepUp(std::string_view path)
{
    while (!path.empty())
    {
        const std::size_t end = std::min(path.find('/'), path.size());
        if (path.substr(0, end) == "..")
            return true;
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return false;
}

} // namespace

bool IsDataUri(std::string_view uri)
{
    return uri.starts_with("data:");
}

std::string DataOf(std::string_view uri)
{
    const std::size_t comma = uri.find(',');
    if (comma == std::string_view::npos)
        throw Error("is a data URI without a comma before its data");
    const std::string_view data = uri.substr(comma + 1);
    return uri.substr(0, comma).ends_with(kBase64Mark) ? FromBase64(data) : WithoutEscapes(data);
}

std::string RelativePathOf(std::string_view uri)
{
    std::string path = WithoutEscapes(uri);
    const std::size_t colon = path.find(':');
    const bool has_scheme =
        colon != std::string::npos && IsLetter(path[0]) &&
        std::all_of(path.begin(), path.begin() + static_cast<std::ptrdiff_t>(colon),
                    [](char c)
                    { return IsLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.'; });
    if (path.empty())
        throw Error("names no file");
    if (has_scheme)
        throw Error("is a URL or has a drive; only files at or below the scene's folder are read");
    if (path.front() == '/' || path.find('\\') != std::string::npos || HasStepUp(path))
        throw Error("leads out of the scene's folder; only files at or below it are read");
    if (std::any_of(path.begin(), path.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }))
        throw Error("has control characters");
    return path;
}

} // namespace gltf
