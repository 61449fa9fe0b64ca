#pragma once

#include "gltf/error.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace gltf
{

/// The path of a value in the JSON, for errors: `animations[3] "Dance": samplers[2].output`. It refers to
/// what it is made of.
struct Place
{
    std::string_view list;         // name of the array
    std::size_t index = 0;         // in it
    std::string_view name = {};    // what its author called it
    const Place* inside = nullptr; // of what the array is a member

    /// With the name on one line and not too long.
    std::string Text() const;

    [[noreturn]] void Fail(const std::string& cause) const { throw Error(Text() + ": " + cause); }
    [[noreturn]] void Fail(std::string_view member, const std::string& cause) const
    {
        throw Error(Text() + (name.empty() ? "." : ": ") + std::string(member) + " " + cause);
    }
};

} // namespace gltf
