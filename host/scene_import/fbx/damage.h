#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace mobu_host::fbx
{

// Why a file cannot be read. what() is one line with the cause and, where the file itself is at fault, the offset.
class Damage : public std::runtime_error
{
public:
    explicit Damage(const std::string& cause) : std::runtime_error(cause) {}
    Damage(std::size_t offset, const std::string& cause)
        : std::runtime_error(cause + " (byte " + std::to_string(offset) + ")")
    {
    }
};

} // namespace mobu_host::fbx
