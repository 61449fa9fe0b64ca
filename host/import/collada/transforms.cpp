#include "host/import/collada/transforms.h"

#include "host/import/collada/numbers.h"
#include "numerics/trigonometry.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>

namespace mobu_host::collada
{
namespace
{

struct KindRow
{
    std::string_view element;
    TransformKind kind;
    std::size_t values;
    std::string_view members; // one letter for each value that has a name; A is "ANGLE"
};

constexpr std::array<KindRow, 6> kKinds{{
    {"matrix", TransformKind::Matrix, kMatrixSize, ""},
    {"translate", TransformKind::Translate, 3, "XYZ"},
    {"rotate", TransformKind::Rotate, 4, "XYZA"},
    {"scale", TransformKind::Scale, 3, "XYZ"},
    {"lookat", TransformKind::LookAt, 9, ""},
    {"skew", TransformKind::Skew, 7, "A"},
}};

const KindRow* FindKind(std::string_view element)
{
    const auto found = std::find_if(kKinds.begin(), kKinds.end(),
                                    [element](const KindRow& row) { return row.element == element; });
    return found == kKinds.end() ? nullptr : &*found;
}

const KindRow& RowOf(TransformKind kind)
{
    return kKinds[static_cast<std::size_t>(kind)];
}

// The number in "(3)" at the beginning of `text`, which moves after it.
std::optional<std::size_t> TakeIndex(std::string_view& text)
{
    if (!text.starts_with('('))
        return std::nullopt;
    std::size_t index = 0;
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data() + 1, last, index);
    if (error != std::errc() || end == last || *end != ')')
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end + 1 - text.data()));
    return index;
}

Vector VectorAt(const double* values)
{
    return {values[0], values[1], values[2]};
}

// A vector of length 0 stays.
Vector Normalized(const Vector& vector)
{
    const double length = Length(vector);
    return length > 0.0 && std::isfinite(length) ? vector * (1.0 / length) : Vector{};
}

Matrix3 AxisAngle(const Vector& axis, double degrees)
{
    const Vector unit = Normalized(axis);
    if (unit == Vector{})
        return {};
    const auto [sine, cosine] = numerics::SineAndCosineOfDegrees(degrees);
    const auto [x, y, z] = unit;
    const double rest = 1.0 - cosine;
    return OfColumns({cosine + x * x * rest, y * x * rest + z * sine, z * x * rest - y * sine},
                     {x * y * rest - z * sine, cosine + y * y * rest, z * y * rest + x * sine},
                     {x * z * rest + y * sine, y * z * rest - x * sine, cosine + z * z * rest});
}

Affine LookAt(const double* values)
{
    const Vector eye = VectorAt(values);
    const Vector look = Normalized(VectorAt(values + 3) - eye);
    const Vector right = Normalized(Cross(look, VectorAt(values + 6)));
    if (right == Vector{})
        return {Matrix3(), eye}; // no direction, or one that is up
    return {OfColumns(right, Cross(right, look), look * -1.0), eye};
}

Matrix3 Skew(const double* values)
{
    const auto [sine, cosine] = numerics::SineAndCosineOfDegrees(values[0]);
    const Vector turned = Normalized(VectorAt(values + 1));
    const Vector along = Normalized(VectorAt(values + 4));
    Matrix3 skew;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            skew.at[row][column] += along[row] * turned[column] * (sine / cosine);
    return skew;
}

Affine OfMatrix(const double* values)
{
    Affine affine;
    for (std::size_t row = 0; row < 3; ++row)
    {
        for (std::size_t column = 0; column < 3; ++column)
            affine.linear.at[row][column] = values[4 * row + column];
        affine.place[row] = values[4 * row + 3];
    }
    return affine;
}

// The rotation in `matrix`, without scale, shear and mirroring. Axes without length are derived from the others.
Matrix3 RotationIn(const Matrix3& matrix)
{
    const double sign = Determinant(matrix) < 0.0 ? -1.0 : 1.0;
    const auto column = [&matrix, sign](std::size_t i) { return Column(matrix, i) * sign; };
    Vector x = Normalized(column(0));
    Vector z = Normalized(Cross(x, column(1)));
    if (z == Vector{})
        z = Normalized(Cross(x, Cross(column(2), x)));
    if (x == Vector{})
    {
        z = Normalized(column(2));
        x = Normalized(Cross(column(1), z));
    }
    if (x == Vector{} || z == Vector{})
        return {};
    return OfColumns(x, Cross(z, x), z);
}

Matrix3 Between(const Matrix3& from, const Matrix3& to, double fraction)
{
    Matrix3 between;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            between.at[row][column] =
                from.at[row][column] + (to.at[row][column] - from.at[row][column]) * fraction;
    return between;
}

} // namespace

bool IsTransform(Element element)
{
    return FindKind(element.name()) != nullptr;
}

std::size_t CountOfValues(TransformKind kind)
{
    return RowOf(kind).values;
}

std::optional<std::size_t> IndexOfValue(TransformKind kind, std::string_view member)
{
    if (member.starts_with('('))
    {
        std::optional<std::size_t> index = TakeIndex(member);
        if (index && kind == TransformKind::Matrix && !member.empty())
        {
            const std::optional<std::size_t> row = TakeIndex(member);
            index = row && *index < 4 && *row < 4 ? std::optional(4 * *row + *index) : std::nullopt;
        }
        return index && member.empty() && *index < CountOfValues(kind) ? index : std::nullopt;
    }
    const char letter = member == "ANGLE" ? 'A' : member.size() == 1 && member != "A" ? member.front() : '\0';
    const std::size_t index = RowOf(kind).members.find(letter);
    return index == std::string_view::npos ? std::nullopt : std::optional(index);
}

std::vector<Transform> ReadTransforms(const XmlDocument& document, Element node)
{
    std::vector<Transform> transforms;
    for (const Element element : node.children())
    {
        const KindRow* const row = FindKind(element.name());
        if (!row)
            continue;
        Transform& transform = transforms.emplace_back();
        transform.kind = row->kind;
        ReadNumbers(document, element, std::span(transform.values).first(row->values));
    }
    return transforms;
}

Affine AffineOf(const Transform& transform)
{
    const double* const values = transform.values.data();
    switch (transform.kind)
    {
    case TransformKind::Matrix:
        return OfMatrix(values);
    case TransformKind::Translate:
        return {Matrix3(), VectorAt(values)};
    case TransformKind::Rotate:
        return {AxisAngle(VectorAt(values), values[3]), {}};
    case TransformKind::Scale:
        return {Scaling(VectorAt(values)), {}};
    case TransformKind::LookAt:
        return LookAt(values);
    case TransformKind::Skew:
        return {Skew(values), {}};
    }
    return {};
}

Affine AffineOf(const std::vector<Transform>& transforms)
{
    Affine affine;
    for (const Transform& transform : transforms)
        affine = affine * AffineOf(transform);
    return affine;
}

std::array<double, kMatrixSize> MatrixBetween(const double* from, const double* to, double fraction)
{
    const Affine a = OfMatrix(from);
    const Affine b = OfMatrix(to);
    const Matrix3 turn_a = RotationIn(a.linear);
    const Matrix3 turn_b = RotationIn(b.linear);
    const Matrix3 rest = Between(Transposed(turn_a) * a.linear, Transposed(turn_b) * b.linear, fraction);
    const Matrix3 linear = TurnBetween(turn_a, turn_b, fraction) * rest;
    std::array<double, kMatrixSize> values{};
    for (std::size_t row = 0; row < 3; ++row)
    {
        for (std::size_t column = 0; column < 3; ++column)
            values[4 * row + column] = linear.at[row][column];
        values[4 * row + 3] = a.place[row] + (b.place[row] - a.place[row]) * fraction;
    }
    values[kMatrixSize - 1] = 1.0;
    return values;
}

} // namespace mobu_host::collada
