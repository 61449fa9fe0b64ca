#pragma once

/// The numbers of an accessor: plain, strided, sparse, normalised.

#include "gltf/document.h"

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

namespace gltf
{

enum class Components
{
    Floats,
    Normalised, // whole numbers that mean -1 to 1 or 0 to 1
    Whole
};

struct AccessorShape
{
    std::size_t count = 0; // elements
    std::size_t width = 0; // components of an element; columns of matrices follow one another
    Components components = Components::Floats;
};

AccessorShape ShapeOf(const Document& document, std::size_t accessor);

using Numbers = std::shared_ptr<const std::vector<double>>;

/// Reads accessors, each once. Accessors can share the bytes they come from, so what all of them take together is
/// limited: to 16 times the bytes of the document and of the files beside it that were read, and 4 MiB.
class AccessorReader
{
public:
    explicit AccessorReader(Document& document) : document_(document) {}

    /// count x width finite numbers, element by element.
    Numbers Read(std::size_t accessor);

private:
    void TakeMemory(const AccessorShape& shape, const Place& place);
    void ReadElements(JsonValue json, const AccessorShape& shape, std::vector<double>& numbers,
                      const Place& place);
    void ReplaceSparse(JsonValue json, const AccessorShape& shape, std::vector<double>& numbers,
                       const Place& place);

    Document& document_;
    std::map<std::size_t, Numbers> read_; // by accessor
    std::size_t taken_ = 0;               // bytes
};

} // namespace gltf
