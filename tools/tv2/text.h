#pragma once

#include "tev2_loader/io/wide_string.h"
#include "text/message_text.h"
#include "text/percent.h"
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

/// Wraps at words, to lines of at most `width` columns where possible. Lines after the first are indented by `indent`;
/// the first has `used` columns already. Lines of the text that begin with a blank are not wrapped.
std::string Wrapped(std::string_view text, std::size_t width, std::size_t indent = 0, std::size_t used = 0);

/// Number of terminal columns of a text, one per character.
std::size_t ColumnsOf(std::string_view text);

} // namespace tv2
