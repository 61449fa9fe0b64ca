#pragma once

#include <fbsdk/fbsdk.h>

#include <cmath>
#include <cstddef>
#include <limits>

namespace mobu_host
{

/// The value of a property, as GetData and SetData carry it.
struct ValueBytes
{
    alignas(8) unsigned char bytes[32] = {};
};

/// Bytes of a value of this type; 0 for types that hold none. Text counts as its pointer.
std::size_t ValueSize(FBPropertyType type);

/// How many numbers a value of this type has (0: none), and each of them as a double.
int NumberCount(FBPropertyType type);
double NumberAt(FBPropertyType type, const ValueBytes& value, int component);
void SetNumberAt(FBPropertyType type, ValueBytes& value, int component, double number);

/// The nearest whole number that the type can hold; 0 for NaN.
template <class Integer>
Integer Nearest(double number)
{
    const double rounded = std::isnan(number) ? 0.0 : std::round(number);
    if (rounded >= static_cast<double>(std::numeric_limits<Integer>::max()))
        return std::numeric_limits<Integer>::max();
    if (rounded <= static_cast<double>(std::numeric_limits<Integer>::min()))
        return std::numeric_limits<Integer>::min();
    return static_cast<Integer>(rounded);
}

} // namespace mobu_host
