#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tev2_viewer
{

/// JSON in ASCII, written from front to back. Texts are UTF-16 units, valid or not: every unit that is not printable
/// ASCII, and `<`, becomes \uXXXX, so that no text ends the script element around the JSON or loses a unit.
class JsonText
{
public:
    JsonText& BeginObject() { return Begin('{'); }
    JsonText& EndObject() { return End('}'); }
    JsonText& BeginArray() { return Begin('['); }
    JsonText& EndArray() { return End(']'); }

    /// The name of the next member: letters only.
    JsonText& Key(std::string_view name);

    JsonText& Text(std::u16string_view units);
    JsonText& Text(std::string_view ascii);
    JsonText& Number(std::int64_t number);

    const std::string& Written() const { return text_; }

private:
    JsonText& Begin(char bracket);
    JsonText& End(char bracket);
    void Separate();
    void Unit(char16_t unit);

    std::string text_;
};

/// UTF-8 as UTF-16; each byte that is not part of a character becomes U+FFFD.
std::u16string Utf16Text(std::string_view utf8);

/// The units of a text of a scene as people read it: of 8-bit text that was widened the characters, otherwise the units
/// as they are.
std::u16string ReadableUnits(std::u16string_view units);

} // namespace tev2_viewer
