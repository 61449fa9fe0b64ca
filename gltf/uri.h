#pragma once

#include <string>
#include <string_view>

namespace gltf
{

bool IsDataUri(std::string_view uri);

/// The bytes of a data URI, in base64 or with escapes. Throws Error, without a place, for one with damage.
std::string DataOf(std::string_view uri);

/// The path, relative to the document's folder, that a URI means, its escapes resolved. Throws Error, without a place,
/// for everything that might lead out of that folder: a scheme, an absolute path, "..", and backslashes, which are
/// separators on some systems.
std::string RelativePathOf(std::string_view uri);

} // namespace gltf
