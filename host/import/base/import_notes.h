#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace mobu_host
{

/// What is said after the number of things that a note is about: "1 model is mirrored", "6 models are mirrored".
struct NoteKind
{
    std::string one;
    std::string many;

    bool operator==(const NoteKind& other) const = default;
};

/// What a scene file holds and the scene does not, or holds differently. One line for each kind of note, with the names
/// of what it concerns: "6 models are mirrored (negative scale): LeftHandThumb3, LeftHandThumb4, ...".
class ImportNotes
{
public:
    /// `name` of a model, take or property; one that comes again is counted and not repeated. An empty name only
    /// counts.
    void Add(const NoteKind& kind, const std::string& name)
    {
        const auto [found, is_new] = by_text_.emplace(kind.one, notes_.size());
        if (is_new)
            notes_.push_back({kind, 0, {}});
        Note& note = notes_[found->second];
        ++note.count;
        if (!name.empty() && note.names.size() <= kNamesShown &&
            std::find(note.names.begin(), note.names.end(), name) == note.names.end())
            note.names.push_back(name);
    }

    /// Said once and as it is.
    void Tell(std::string line) { notes_.push_back({{std::move(line), {}}, 0, {}}); }

    std::vector<std::string> Lines() const
    {
        std::vector<std::string> lines;
        lines.reserve(notes_.size());
        for (const Note& note : notes_)
            lines.push_back(LineOf(note));
        return lines;
    }

private:
    static constexpr std::size_t kNamesShown = 8;

    struct Note
    {
        NoteKind kind;
        std::size_t count; // 0: said as it is
        std::vector<std::string> names;
    };

    static std::string LineOf(const Note& note)
    {
        if (note.count == 0)
            return note.kind.one;
        std::string line =
            std::to_string(note.count) + " " + (note.count == 1 ? note.kind.one : note.kind.many);
        for (std::size_t i = 0; i < note.names.size() && i < kNamesShown; ++i)
            line += (i == 0 ? ": " : ", ") + note.names[i];
        return note.names.size() > kNamesShown ? line + ", ..." : line;
    }

    std::vector<Note> notes_;
    std::map<std::string, std::size_t> by_text_; // index in `notes_`
};

} // namespace mobu_host
