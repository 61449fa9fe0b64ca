#include "tools/tv2/dump_writer.h"

#include "check/track_view.h"
#include "tev2_loader/format.h"
#include "tools/tv2/text.h"

#include <algorithm>
#include <vector>

namespace tv2
{

using namespace TEV2_LOADER;
using tev2_check::TrackView;

namespace
{

constexpr std::size_t kBytesPerLine = 32;

class TreeDump : public DumpWriter
{
public:
    TreeDump(std::ostream& out, std::size_t limit) : out_(out), limit_(limit) {}

    void BeginObject(std::string_view key) override
    {
        Label(key);
        out_ << '\n';
        entries_.push_back(kNotAnArray);
    }

    void EndObject() override { entries_.pop_back(); }

    void BeginArray(std::string_view key, std::size_t count) override
    {
        Label(key);
        out_ << " (" << CountText(count) << ")\n";
        entries_.push_back(0);
    }

    void EndArray() override { entries_.pop_back(); }

    void Integer(std::string_view key, std::int64_t value) override { Line(key, std::to_string(value)); }
    void Float(std::string_view key, float value) override { Line(key, FloatText(value)); }
    void Boolean(std::string_view key, bool value) override { Line(key, value ? "yes" : "no"); }
    void Text(std::string_view key, std::string_view text) override { Line(key, OneLine(text)); }
    void Absent(std::string_view key) override { Line(key, "absent"); }

    void String(std::string_view key, const TEV2_WIDE_STRING& string) override
    {
        Line(key, '"' + OneLine(ReadableText(string.Text())) + '"');
    }

    void Strings(std::string_view key, std::span<const TEV2_WIDE_STRING> strings) override
    {
        BeginArray(key, strings.size());
        for (const TEV2_WIDE_STRING& string : strings)
            String({}, string);
        EndArray();
    }

    void Bytes(std::string_view key, std::span<const std::uint8_t> bytes) override
    {
        Line(key, CountOf(bytes.size(), "byte", "bytes"));
        const std::size_t lines = (bytes.size() + kBytesPerLine - 1) / kBytesPerLine;
        for (std::size_t line = 0; line < std::min(lines, limit_); ++line)
        {
            Indent(1);
            const std::size_t first = line * kBytesPerLine;
            for (std::size_t i = first; i < std::min(first + kBytesPerLine, bytes.size()); ++i)
            {
                static constexpr char kDigits[] = "0123456789abcdef";
                out_ << (i == first ? "" : " ") << kDigits[bytes[i] >> 4] << kDigits[bytes[i] & 15];
            }
            out_ << '\n';
        }
        More(lines, "more line", "more lines");
    }

    void Numbers(std::string_view key, const NumberTable& numbers) override
    {
        Line(key, CountOf(numbers.Count(), "value", "values"));
        for (std::size_t element = 0; element < std::min(numbers.Count(), limit_); ++element)
        {
            Indent(1);
            for (std::size_t component = 0; component < numbers.Width(); ++component)
                out_ << (component == 0 ? "" : " ")
                     << (numbers.Whole() ? std::to_string(numbers.Integer(element, component))
                                         : FloatText(numbers.Float(element, component)));
            out_ << '\n';
        }
        More(numbers.Count(), "more value", "more values");
    }

    void Track(std::string_view key, const TEV2_ANIMATABLE* track) override
    {
        if (track == nullptr)
        {
            Absent(key);
            return;
        }
        const TrackView view(*track);
        Label(key);
        out_ << ' ' << kTrackKinds[view.Kind()].className << " (kind " << view.Kind() << "), "
             << CountOf(view.TimeCount(), "time", "times") << ", "
             << CountOf(view.ValueCount(), "value", "values") << ", cursor " << track->m_current_key << " + "
             << FloatText(track->m_fraction) << '\n';
        const std::size_t keys = std::max(view.TimeCount(), view.ValueCount());
        for (std::size_t i = 0; i < std::min(keys, limit_); ++i)
        {
            Indent(1);
            out_ << (i < view.TimeCount() ? FloatText(view.Time(i)) : "no time") << ':';
            if (i >= view.ValueCount())
            {
                out_ << " no value";
            }
            else if (view.IsInteger())
            {
                out_ << ' ' << view.Integer(i);
            }
            else
            {
                const auto value = view.Value(i);
                for (std::size_t component = 0; component < view.Width(); ++component)
                    out_ << ' ' << FloatText(value[component]);
            }
            out_ << '\n';
        }
        More(keys, "more key", "more keys");
    }

private:
    static constexpr std::size_t kNotAnArray = ~std::size_t{0};

    void Indent(std::size_t more = 0)
    {
        for (std::size_t i = 0; i < entries_.size() + more; ++i)
            out_ << "  ";
    }

    /// The key, or the index where the entry of an array begins.
    void Label(std::string_view key)
    {
        Indent();
        if (!entries_.empty() && entries_.back() != kNotAnArray)
            out_ << '[' << entries_.back()++ << ']';
        else
            out_ << key << ':';
    }

    void Line(std::string_view key, std::string_view value)
    {
        Label(key);
        out_ << ' ' << value << '\n';
    }

    void More(std::size_t count, std::string_view singular, std::string_view plural)
    {
        if (count > limit_)
        {
            Indent(1);
            out_ << "... " << CountOf(count - limit_, singular, plural) << '\n';
        }
    }

    std::ostream& out_;
    std::size_t limit_;
    std::vector<std::size_t> entries_; // one for every open level: the next index, or kNotAnArray
};

} // namespace

std::unique_ptr<DumpWriter> MakeTreeDump(std::ostream& out, std::size_t limit)
{
    return std::make_unique<TreeDump>(out, limit);
}

} // namespace tv2
