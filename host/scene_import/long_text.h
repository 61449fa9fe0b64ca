#pragma once

#include "host/scene_import/import_notes.h"

#include <cstddef>
#include <string>

namespace mobu_host
{

inline constexpr std::size_t kLongestText =
    65535; // of an exported file; one unit for each byte of the SDK's texts

// Notes a text or a name that an export cuts. `where` names it.
inline void NoteLongText(const std::string& text, const std::string& where, ImportNotes& notes)
{
    constexpr std::size_t kShown = 60;
    if (text.size() > kLongestText)
        notes.Add({"text of more than 65535 characters is cut by an export",
                   "texts of more than 65535 characters are cut by an export"},
                  where.size() > kShown ? where.substr(0, kShown) + "..." : where);
}

} // namespace mobu_host
