#pragma once

#include "tests/support/sample_scenes.h"

#include <string>
#include <vector>

// Files whose records are as small as can be, and the objects that stand for them as large.

namespace tv2_tests
{

struct DenseFile
{
    std::string what;
    Bytes image;
};

/// A chunk whose body is typed.
struct DenseBody
{
    std::string what;
    Bytes chunk;

    Bytes Typed() const;

    /// With one byte more: the body is read to its end, and kept for the byte behind it.
    Bytes Kept() const;
};

/// A file of the newest version without records.
Bytes Current();

/// Copies of `one`, at least `size` bytes in all.
Bytes Many(std::size_t size, const Bytes& one);

/// A node without tracks.
Bytes Node(std::uint32_t parent);

/// Files of about `size` bytes. DenseFiles: many chunks, or many elements outside bodies. DenseChunks: the smallest
/// chunks of each kind that can be kept. DenseBodies: bodies with many elements.
std::vector<DenseFile> DenseFiles(std::size_t size);
std::vector<DenseFile> DenseChunks(std::size_t size);
std::vector<DenseBody> DenseBodies(std::size_t size);

} // namespace tv2_tests
