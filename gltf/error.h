#pragma once

#include <stdexcept>
#include <string>

namespace gltf
{

/// Why a document cannot be read. what() is one line with the place in the document and the cause.
class Error : public std::runtime_error
{
public:
    explicit Error(const std::string& cause) : std::runtime_error(cause) {}
};

} // namespace gltf
