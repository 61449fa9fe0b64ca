#pragma once

/// The transforms of a node, one after the other as the file lists them: each is applied within the one before it.

#include "host/import/collada/xml_document.h"
#include "host/math/affine.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace mobu_host::collada
{

enum class TransformKind
{
    Matrix,    // 16 numbers, row by row; the last row does not count
    Translate, // x, y, z
    Rotate,    // axis, degrees
    Scale,     // x, y, z
    LookAt,    // eye, point looked at, up: the node looks along its -Z, +Y up
    Skew       // degrees, the axis that is turned, the axis that points move along
};

inline constexpr std::size_t kMatrixSize = 16;

struct Transform
{
    TransformKind kind = TransformKind::Matrix;
    std::array<double, kMatrixSize> values{};
};

bool IsTransform(Element element);

std::size_t CountOfValues(TransformKind kind);

/// Index of a value by the name that channels give it: "ANGLE", "X", "(3)", or "(column)(row)" of a matrix.
std::optional<std::size_t> IndexOfValue(TransformKind kind, std::string_view member);

std::vector<Transform> ReadTransforms(const XmlDocument& document, Element node);

/// In the file's unit of length.
Affine AffineOf(const Transform& transform);
Affine AffineOf(const std::vector<Transform>& transforms);

/// A matrix on the way from one key to the next: the rotation turns along the shorter arc, all else goes straight.
std::array<double, kMatrixSize> MatrixBetween(const double* from, const double* to, double fraction);

} // namespace mobu_host::collada
