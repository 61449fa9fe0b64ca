#pragma once

#include "host/import/import_notes.h"

#include <cstddef>
#include <string>

namespace mobu_host
{

/// Of a text of an exported file, which has one unit for each byte of the SDK's texts.
inline constexpr std::size_t kLongestText = 65535;

/// Notes a text or a name that an export cuts: that of `owner`, or, with `property`, of a property of it.
inline void NoteLongText(const std::string& text, const std::string& owner, const std::string& property,
                         ImportNotes& notes)
{
    if (text.size() <= kLongestText)
        return;
    const auto shown = [](const std::string& name)
    {
        constexpr std::size_t kShown = 60;
        return name.size() > kShown ? name.substr(0, kShown) + "..." : name;
    };
    notes.Add({"text of more than 65535 characters is cut by an export",
               "texts of more than 65535 characters are cut by an export"},
              shown(owner) + (owner.empty() || property.empty() ? "" : ".") + shown(property));
}

} // namespace mobu_host
