#pragma once

#include "host/import/base/import_notes.h"

#include <set>
#include <string>
#include <unordered_map>

namespace mobu_host
{

/// Makes names unique: a duplicate gets a number, "Hips 1".
class UniqueNames
{
public:
    /// `fallback` is for an empty name. Duplicates are noted.
    std::string Make(std::string name, const char* fallback, ImportNotes& notes)
    {
        name.resize(std::char_traits<char>::length(name.c_str())); // the SDK's texts end at a zero
        if (name.empty())
            name = fallback;
        if (taken_.insert(name).second)
            return name;
        unsigned& number = last_numbers_[name];
        std::string numbered;
        do
            numbered = name + " " + std::to_string(++number);
        while (!taken_.insert(numbered).second);
        notes.Add({"duplicate name was numbered", "duplicate names were numbered"},
                  name + " -> \"" + numbered + "\"");
        return numbered;
    }

private:
    std::set<std::string> taken_;
    std::unordered_map<std::string, unsigned> last_numbers_; // given to a name
};

/// The SDK reads what precedes a colon as a namespace, and files are named after takes: they get "_" for ':', '/' and
/// '\\'.
inline std::string TakeName(const std::string& name, ImportNotes& notes)
{
    constexpr const char* kSeparators = ":/\\";
    std::string changed = name;
    for (std::size_t at = 0; (at = changed.find_first_of(kSeparators, at)) != std::string::npos;)
        changed[at] = '_';
    if (changed != name)
        notes.Add(
            {"take name with ':', '/' or '\\' was changed", "take names with ':', '/' or '\\' were changed"},
            name + " -> \"" + changed + "\"");
    return changed;
}

} // namespace mobu_host
