#pragma once

#include "text/printable.h"

#include <cstddef>
#include <stdexcept>
#include <string>

namespace mobu_host
{

/// Why a scene file cannot be read. what() is one line with the cause and, where the file itself is at fault, the
/// place: a byte offset, a line, or the name of the node or take. Names may come as they are in the file: what() has
/// them printable.
class ParseError : public std::runtime_error
{
public:
    explicit ParseError(const std::string& cause) : std::runtime_error(Printable(cause)) {}
    ParseError(std::size_t offset, const std::string& cause)
        : ParseError(cause + " (byte " + std::to_string(offset) + ")")
    {
    }
};

} // namespace mobu_host
