#pragma once

/// Numbers of an element's text. Only what single precision can hold is read: NaN, infinity and what is larger throw
/// ParseError, as does any other word.

#include "host/import/collada/xml_document.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace mobu_host::collada
{

/// Exactly as many as there are in `numbers`.
void ReadNumbers(const XmlDocument& document, Element element, std::span<double> numbers);

double ReadNumber(const XmlDocument& document, Element element);

/// All of a <float_array>, whose "count" says how many.
std::vector<double> ReadFloatArray(const XmlDocument& document, Element element);

/// A whole number from 0 in an attribute; `otherwise` where there is no such attribute.
std::size_t ReadCount(const XmlDocument& document, Element element, const char* attribute,
                      std::size_t otherwise);

/// A number in an attribute; `otherwise` where there is no such attribute.
double ReadNumber(const XmlDocument& document, Element element, const char* attribute, double otherwise);

} // namespace mobu_host::collada
