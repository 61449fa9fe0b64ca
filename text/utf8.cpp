#include "text/utf8.h"

#include "tev2_loader/io/utf8.h"

std::size_t Utf8Length(std::string_view text)
{
    return TEV2_LOADER::Utf8Length(text);
}

bool IsUtf8(std::string_view text)
{
    return TEV2_LOADER::IsUtf8(text);
}
