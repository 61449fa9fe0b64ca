#include "host/import/collada/numbers.h"

#include "host/import/base/exportable_number.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>

namespace mobu_host::collada
{
namespace
{

// What is too small for double precision is 0.
bool IsTiny(std::string_view word)
{
    const std::size_t exponent = word.find_first_of("eE");
    return exponent != std::string_view::npos && word.substr(exponent + 1).starts_with('-');
}

double NumberOf(const XmlDocument& document, Element element, std::string_view word)
{
    std::string_view digits = word;
    if (digits.starts_with('+') && !digits.starts_with("+-"))
        digits.remove_prefix(1); // XML allows it
    double number = 0.0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error == std::errc::invalid_argument || end != digits.data() + digits.size())
        document.Fail(element, "holds " + Quoted(word) + " where a number is needed");
    if (error == std::errc::result_out_of_range)
        number = IsTiny(digits) ? 0.0 : std::numeric_limits<double>::infinity();
    if (!IsExportable(number))
        document.Fail(element, "holds " + Quoted(word) + ", which is not finite in single precision");
    return number;
}

[[noreturn]] void FailCount(const XmlDocument& document, Element element, std::size_t stated,
                            std::size_t found)
{
    document.Fail(element, "holds " + std::to_string(found) + " numbers where there have to be " +
                               std::to_string(stated));
}

std::size_t CountWords(Element element)
{
    std::size_t count = 0;
    Words words(element);
    for (std::string_view word; words.Next(word);)
        ++count;
    return count;
}

} // namespace

void ReadNumbers(const XmlDocument& document, Element element, std::span<double> numbers)
{
    std::size_t count = 0;
    Words words(element);
    for (std::string_view word; words.Next(word); ++count)
        if (count < numbers.size())
            numbers[count] = NumberOf(document, element, word);
    if (count != numbers.size())
        FailCount(document, element, numbers.size(), count);
}

double ReadNumber(const XmlDocument& document, Element element)
{
    double number = 0.0;
    ReadNumbers(document, element, {&number, 1});
    return number;
}

std::vector<double> ReadFloatArray(const XmlDocument& document, Element element)
{
    const std::size_t count = CountWords(element);
    if (const std::size_t stated = ReadCount(document, element, "count", count); stated != count)
        FailCount(document, element, stated, count);
    std::vector<double> numbers(count);
    ReadNumbers(document, element, numbers);
    return numbers;
}

std::size_t ReadCount(const XmlDocument& document, Element element, const char* attribute,
                      std::size_t otherwise)
{
    if (!element.attribute(attribute))
        return otherwise;
    std::string_view word = Attribute(element, attribute);
    const std::size_t first = std::min(word.find_first_not_of(' '), word.size());
    word = word.substr(first, word.find_last_not_of(' ') + 1 - first);
    std::size_t count = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), count);
    if (error != std::errc() || end != word.data() + word.size())
        document.Fail(element, std::string("has the ") + attribute + " " + Quoted(word) +
                                   ", which is no whole number from 0");
    return count;
}

double ReadNumber(const XmlDocument& document, Element element, const char* attribute, double otherwise)
{
    std::string_view word = Attribute(element, attribute);
    const std::size_t first = std::min(word.find_first_not_of(' '), word.size());
    word = word.substr(first, word.find_last_not_of(' ') + 1 - first);
    return word.empty() ? otherwise : NumberOf(document, element, word);
}

} // namespace mobu_host::collada
