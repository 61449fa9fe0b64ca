#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace mobu_host
{

// Things worth telling once for each kind, however often they occur: "3 x blend shape channels are passed
// over".
class ImportNotes
{
public:
    void Add(const std::string& what)
    {
        for (auto& [text, count] : kinds_)
        {
            if (text == what)
            {
                ++count;
                return;
            }
        }
        kinds_.emplace_back(what, 1);
    }

    // Told once and as it is, without a count.
    void Tell(std::string what) { kinds_.emplace_back(std::move(what), 0); }

    std::vector<std::string> Lines() const
    {
        std::vector<std::string> lines;
        for (const auto& [text, count] : kinds_)
            lines.push_back(count == 0 ? text : std::to_string(count) + " x " + text);
        return lines;
    }

private:
    std::vector<std::pair<std::string, std::size_t>> kinds_;
};

} // namespace mobu_host
