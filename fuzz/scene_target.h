#pragma once

#include <cstddef>
#include <cstdint>

// Plays an input as a scene file of the format of this name the whole way: the reader, the host's scene, and its evaluation
// in some takes. A file that cannot be read has to say why.
int ReadAsScene(const char* format, const std::uint8_t* data, std::size_t size);
