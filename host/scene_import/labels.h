#pragma once

#include <map>
#include <set>
#include <string>

namespace mobu_host
{

// Labels that are unlike each other: one that is taken gets a number, "Hips 1".
class Labels
{
public:
    // `renumbered` tells whether the name was taken.
    std::string Free(std::string label, const char* where_nameless, bool& renumbered)
    {
        label.resize(std::char_traits<char>::length(label.c_str())); // the SDK's texts end at a zero
        if (label.empty())
            label = where_nameless;
        renumbered = !taken_.insert(label).second;
        if (!renumbered)
            return label;
        unsigned& number = last_numbers_[label];
        std::string numbered;
        do
            numbered = label + " " + std::to_string(++number);
        while (!taken_.insert(numbered).second);
        return numbered;
    }

private:
    std::set<std::string> taken_;
    std::map<std::string, unsigned> last_numbers_; // given to a label
};

// The SDK takes what stands before a colon for a namespace, and files are named after takes. True when `name` was
// changed.
inline bool MakeTakeName(std::string& name)
{
    constexpr const char* kSeparators = ":/\\";
    bool changed = false;
    for (std::size_t at = 0; (at = name.find_first_of(kSeparators, at)) != std::string::npos; changed = true)
        name[at] = '_';
    return changed;
}

} // namespace mobu_host
