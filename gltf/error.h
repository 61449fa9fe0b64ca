#pragma once

#include "text/printable.h"

#include <stdexcept>
#include <string>

namespace gltf
{

/// Why a document cannot be read. what() is one line with the place in the document and the cause. Names may come
/// as they are in the document: what() has them printable.
class Error : public std::runtime_error
{
public:
    explicit Error(const std::string& cause) : std::runtime_error(Printable(cause)) {}
};

} // namespace gltf
