#pragma once

#include "exporter/rules/message_text.h"
#include "tev2_loader/io/wide_string.h"
#include "text/printable.h"
#include "text/utf8.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tv2
{

using TEV2_LOADER::ReadableText;

/// True when ReadableText(units), converted back to UTF-16, is `units`.
bool TextTellsUnits(std::u16string_view units);

/// A text of the SDK; null is empty.
inline std::string TextOf(const char* text)
{
    return text != nullptr ? text : "";
}

using tev2_exporter::CountOf;
using tev2_exporter::CountText;
using tev2_exporter::Listed;
using tev2_exporter::Quoted;

/// Wraps at words, to lines of at most `width` columns where possible. Lines after the first are indented by `indent`;
/// the first has `used` columns already. Lines of the text that begin with a blank are not wrapped.
std::string Wrapped(std::string_view text, std::size_t width, std::size_t indent = 0, std::size_t used = 0);

/// Number of terminal columns of a text, one per character.
std::size_t ColumnsOf(std::string_view text);

/// Every byte but ASCII letters, digits and -._~/ as %XX.
std::string PercentEncoded(std::string_view bytes);

/// The shortest decimal that reads back to the same bits, always with a point or an exponent ("1.0", "-0.0", "1e+20").
/// Non-finite values: "Infinity", "-Infinity", "NaN", and "NaN(0xffc00001)" when the bits are not 0x7fc00000.
std::string FloatText(float value);

/// The number with at most six digits: "59.94", "30".
std::string ShortNumber(double value);

/// "0x0000002c"
std::string HexText(std::uint64_t value, int digits = 8);

} // namespace tv2
