#pragma once

#include <string_view>

// The texts that a page is made of, embedded when the library is built.

namespace tev2_viewer
{

/// Places to fill in are names between @ signs: @policy@, @title@, @style@, @data@, @licences@, @three@, @script@.
extern const std::string_view kPageTemplate;

extern const std::string_view kPageStyle;
extern const std::string_view kPageScript;

extern const std::string_view kThreeScript;
extern const std::string_view kThreeLicence;

} // namespace tev2_viewer
