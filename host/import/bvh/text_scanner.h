#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mobu_host::bvh
{

/// Goes through a text word by word; errors name the line.
class TextScanner
{
public:
    explicit TextScanner(std::string_view text) : text_(text) {}

    /// The next word, on this line or a later one; a brace is a word of its own. Empty at the end of the text.
    std::string_view Word();

    /// Takes the next word if it is `word`, in any case.
    bool Take(std::string_view word);

    /// Throws where the next word is another one.
    void Expect(std::string_view word);

    /// The same for a word with a colon after it: "Frames:", "Frames :".
    void ExpectLabel(std::string_view word);

    /// The rest of this line up to a brace, without blanks around it.
    std::string_view RestOfLine();

    /// The next word as a finite number. `what` it is, for the error.
    double Number(const char* what);

    /// The next word as a whole number from 0 to `most`.
    std::size_t Count(const char* what, std::size_t most);

    /// Whether the next word is the first one of its line. False at the end of the text.
    bool AtLineStart();

    bool AtEnd();

    [[noreturn]] void Fail(const std::string& cause) const;

private:
    void SkipBlanks();

    std::string_view text_;
    std::size_t at_ = 0;
    std::size_t line_ = 1;
    bool fresh_line_ = true; // no word of this line was taken
};

/// Of a file, for a message: shortened, in one line.
std::string Quoted(std::string_view text);

bool SameWord(std::string_view a, std::string_view b); // in any case of ASCII letters

} // namespace mobu_host::bvh
