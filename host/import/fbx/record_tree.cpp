#include "host/import/fbx/record_tree.h"

#include "host/import/base/parse_error.h"
#include "host/import/fbx/little_endian.h"
#include "host/import/fbx/record_frames.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <type_traits>

namespace mobu_host::fbx
{
namespace
{

// What is too large or too small for `double`.
double OutOfRange(std::string_view text)
{
    const std::size_t exponent = text.find_first_of("eE");
    const bool small = exponent == std::string_view::npos ? text.find_first_of("123456789") > text.find('.')
                                                          : text.substr(exponent + 1).starts_with('-');
    const double number = small ? 0.0 : std::numeric_limits<double>::infinity();
    return text.starts_with('-') ? -number : number;
}

// "+1" is written by some, "1.#INF" and "-1.#IND" by others.
template <class Number>
std::optional<Number> Parse(std::string_view text)
{
    if (text.starts_with('+'))
        text.remove_prefix(1);
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if constexpr (std::is_floating_point_v<Number>)
    {
        if (text.find('#') != std::string_view::npos)
            return std::numeric_limits<Number>::quiet_NaN();
        if (error == std::errc::result_out_of_range)
            return OutOfRange(text);
    }
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

template <class Number>
std::optional<Number> ScalarOf(char code, std::string_view bytes)
{
    switch (code)
    {
    case 'C':
    case 'B':
        return static_cast<Number>(LittleEndian<std::uint8_t>(bytes));
    case 'Y':
        return static_cast<Number>(LittleEndian<std::int16_t>(bytes));
    case 'I':
        return static_cast<Number>(LittleEndian<std::int32_t>(bytes));
    case 'L':
        return static_cast<Number>(LittleEndian<std::int64_t>(bytes));
    default:
        return std::nullopt;
    }
}

// 0 for codes that are no scalars.
std::size_t ScalarSize(char code)
{
    switch (code)
    {
    case 'C':
    case 'B':
        return 1;
    case 'Y':
        return 2;
    case 'I':
    case 'F':
        return 4;
    case 'L':
    case 'D':
        return 8;
    default:
        return 0;
    }
}

std::string Printable(char code)
{
    if (code > ' ' && code < 0x7F)
        return std::string("'") + code + "'";
    return std::to_string(static_cast<unsigned char>(code));
}

} // namespace

bool Value::IsArray() const
{
    return code_ == 'f' || code_ == 'd' || code_ == 'l' || code_ == 'i' || code_ == 'b' || code_ == 'c';
}

std::optional<double> Value::Number() const
{
    switch (code_)
    {
    case 'F':
        return static_cast<double>(LittleEndian<float>(bytes_));
    case 'D':
        return LittleEndian<double>(bytes_);
    case 'N':
        return Parse<double>(bytes_);
    case 'W': // "nan", "inf"
        return bytes_.size() > 1 ? Parse<double>(bytes_) : std::nullopt;
    default:
        return ScalarOf<double>(code_, bytes_);
    }
}

std::optional<std::int64_t> Value::Whole() const
{
    if (const auto whole = WholeNumber())
        return whole;
    if (code_ == 'F' || code_ == 'D' || code_ == 'N')
    {
        constexpr double kLimit = 9.2e18;
        const std::optional<double> number = Number();
        if (!number || !(std::abs(*number) < kLimit))
            return std::nullopt;
        return static_cast<std::int64_t>(*number);
    }
    return ScalarOf<std::int64_t>(code_, bytes_);
}

std::optional<std::int64_t> Value::WholeNumber() const
{
    return code_ == 'N' ? Parse<std::int64_t>(bytes_) : std::nullopt;
}

std::optional<std::string_view> Value::Text() const
{
    if (code_ == 'S' || code_ == 'W')
        return bytes_;
    return std::nullopt;
}

char Value::Letter() const
{
    if ((code_ == 'C' || code_ == 'W') && bytes_.size() == 1)
        return bytes_[0];
    return 0;
}

ValueCursor::ValueCursor(const Record& record)
    : file_(record.Tree().File()),
      is_text_(record.Tree().IsText()),
      at_(record.Tree().Frame(record.Index()).values),
      end_(record.Tree().Frame(record.Index()).values_end),
      left_(record.ValueCount())
{
}

bool ValueCursor::Next(Value& value)
{
    if (left_ == 0)
        return false;
    --left_;
    return is_text_ ? NextText(value) : NextBinary(value);
}

std::string_view ValueCursor::Take(std::uint64_t size)
{
    if (size > end_ - at_)
        throw ParseError(at_, "a value leaves its record");
    const std::string_view bytes = file_.substr(at_, static_cast<std::size_t>(size));
    at_ += static_cast<std::size_t>(size);
    return bytes;
}

bool ValueCursor::NextBinary(Value& value)
{
    const std::size_t begin = at_;
    const char code = Take(1)[0];
    if (const std::size_t size = ScalarSize(code))
    {
        value = Value(code, Take(size));
        return true;
    }
    switch (code)
    {
    case 'S':
    case 'R':
        value = Value(code, Take(LittleEndian<std::uint32_t>(Take(4))));
        return true;
    case 'f':
    case 'd':
    case 'l':
    case 'i':
    case 'b':
    case 'c':
    {
        const std::string_view header = Take(12);
        array_ = {LittleEndian<std::uint32_t>(header), LittleEndian<std::uint32_t>(header, 4),
                  LittleEndian<std::uint32_t>(header, 8)};
        value = Value(code, Take(array_.size));
        return true;
    }
    default:
        throw ParseError(begin, "there is no kind of value " + Printable(code));
    }
}

bool ValueCursor::NextText(Value& value)
{
    at_ = SkipSpace(file_, at_, end_);
    if (at_ < end_ && file_[at_] == ',')
        at_ = SkipSpace(file_, at_ + 1, end_);
    return ScanTextValue(file_, at_, end_, value);
}

std::string_view Record::Name() const
{
    const RecordFrame& frame = tree_->Frame(index_);
    return tree_->File().substr(frame.name, frame.name_size);
}

std::size_t Record::Offset() const
{
    return tree_->Frame(index_).name;
}

std::uint64_t Record::ValueCount() const
{
    return tree_->Frame(index_).value_count;
}

Value Record::ValueAt(std::size_t position) const
{
    if (!tree_)
        return {};
    ValueCursor cursor(*this);
    Value value;
    for (std::size_t i = 0; i <= position; ++i)
        if (!cursor.Next(value))
            return {};
    return value;
}

double Record::NumberAt(std::size_t position, double otherwise) const
{
    return ValueAt(position).Number().value_or(otherwise);
}

std::string_view Record::TextAt(std::size_t position) const
{
    return ValueAt(position).Text().value_or(std::string_view());
}

Record Record::FirstChild() const
{
    const std::uint32_t child = tree_ ? tree_->Frame(index_).first_child : 0;
    return child ? Record(tree_, child) : Record();
}

Record Record::Next() const
{
    const std::uint32_t next = tree_->Frame(index_).next;
    return next ? Record(tree_, next) : Record();
}

Record Record::Child(std::string_view name) const
{
    for (const Record& child : Children())
        if (child.Name() == name)
            return child;
    return {};
}

RecordTree::RecordTree(std::string_view file) : file_(file), frames_(1)
{
    if (file.size() > std::numeric_limits<std::uint32_t>::max())
        throw ParseError("FBX files of 4 GiB and more are not read");
    is_text_ = !file.starts_with(kBinaryMagic);
    version_ = is_text_ ? ReadTextFrames(file, frames_) : ReadBinaryFrames(file, frames_);
    if (is_text_)
        ReadVersion();
    ReadTicks();
}

// The version of a text file, which its first line states as well.
void RecordTree::ReadVersion()
{
    const Record header = Root().Child("FBXHeaderExtension").Child("FBXVersion");
    const double number = header.NumberAt(0, version_);
    version_ = number > 0.0 && number < 1e6 ? static_cast<unsigned>(number) : 0;
    if (!Root().FirstChild())
        throw ParseError("it holds no record");
    if (version_ < 6000 || version_ >= 8000)
        throw ParseError(version_ == 0 ? "it states no FBX version"
                                       : "FBX version " + std::to_string(version_) +
                                             " is not read (6000 to 7999, which is 6.0 to 7.x, are)");
}

void RecordTree::ReadTicks()
{
    constexpr std::int64_t kFirstHeaderWithDefinition = 1004;
    constexpr std::int64_t kUsualDefinition = 127;
    constexpr double kOtherTicksPerSecond = 141120000.0;
    const Record header = Root().Child("FBXHeaderExtension");
    const auto version = header.Child("FBXHeaderVersion").ValueAt(0).Whole();
    const auto definition = header.Child("OtherFlags").Child("TCDefinition").ValueAt(0).Whole();
    if (version && *version >= kFirstHeaderWithDefinition && definition && *definition != kUsualDefinition)
        ticks_per_second_ = kOtherTicksPerSecond;
}

std::string PlainText(std::string_view text, const RecordTree& tree)
{
    constexpr std::array<std::array<std::string_view, 2>, 4> kWords{
        {{"&quot;", "\""}, {"&cr;", "\r"}, {"&lf;", "\n"}, {"&amp;", "&"}}};
    std::string plain(text);
    if (!tree.IsText())
        return plain;
    for (std::size_t at = plain.find('&'); at != std::string::npos; at = plain.find('&', at + 1))
        for (const auto& [word, character] : kWords)
            if (plain.compare(at, word.size(), word) == 0)
            {
                plain.replace(at, word.size(), character);
                break;
            }
    return plain;
}

} // namespace mobu_host::fbx
