#include "tools/tv2/dump_writer.h"

#include "check/track_view.h"
#include "tev2_loader/format.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/text.h"

#include <cmath>
#include <vector>

namespace tv2
{

using namespace TEV2_LOADER;
using tev2_check::TrackView;

namespace
{

class JsonDump : public DumpWriter
{
public:
    explicit JsonDump(std::ostream& out) : out_(out) {}

    void BeginObject(std::string_view key) override
    {
        Begin(key, '{');
        if (levels_.size() == 1)
            Integer("schema", kJsonSchema);
    }
    void EndObject() override { End('}'); }
    void BeginArray(std::string_view key, std::size_t) override { Begin(key, '['); }
    void EndArray() override { End(']'); }

    void Integer(std::string_view key, std::int64_t value) override
    {
        Member(key);
        out_ << value;
    }

    void Float(std::string_view key, float value) override
    {
        Member(key);
        Number(value);
    }

    void Boolean(std::string_view key, bool value) override
    {
        Member(key);
        out_ << (value ? "true" : "false");
    }

    void Text(std::string_view key, std::string_view text) override
    {
        Member(key);
        Quoted(text);
    }

    void Absent(std::string_view key) override
    {
        Member(key);
        out_ << "null";
    }

    void String(std::string_view key, const TEV2_WIDE_STRING& string) override
    {
        Text(key, ReadableText(string.Text()));
        if (!TextTellsUnits(string.Text()))
        {
            Member(std::string(key) + "Units");
            Units(string.Text());
        }
    }

    void Strings(std::string_view key, std::span<const TEV2_WIDE_STRING> strings) override
    {
        bool texts_tell = true;
        Member(key);
        List(strings.size(),
             [&](std::size_t i)
             {
                 Quoted(ReadableText(strings[i].Text()));
                 texts_tell = texts_tell && TextTellsUnits(strings[i].Text());
             });
        if (!texts_tell)
        {
            Member(std::string(key) + "Units");
            List(strings.size(),
                 [&](std::size_t i)
                 {
                     if (TextTellsUnits(strings[i].Text()))
                         out_ << "null";
                     else
                         Units(strings[i].Text());
                 });
        }
    }

    void Bytes(std::string_view key, std::span<const std::uint8_t> bytes) override
    {
        static constexpr char kDigits[] = "0123456789abcdef";
        Member(key);
        out_ << '"';
        for (const std::uint8_t byte : bytes)
            out_ << kDigits[byte >> 4] << kDigits[byte & 15];
        out_ << '"';
    }

    void Track(std::string_view key, const TEV2_ANIMATABLE* track) override
    {
        if (track == nullptr)
        {
            Absent(key);
            return;
        }
        const TrackView view(*track);
        BeginObject(key);
        Integer("kind", view.Kind());
        Text("class", kTrackKinds[view.Kind()].className);
        Integer("m_current_key", track->m_current_key);
        Float("m_fraction", track->m_fraction);
        Member("m_times");
        List(view.TimeCount(), [&](std::size_t i) { Number(view.Time(i)); });
        Member("m_values");
        List(view.ValueCount(),
             [&](std::size_t i)
             {
                 if (view.IsInteger())
                 {
                     out_ << view.Integer(i);
                     return;
                 }
                 const auto value = view.Value(i);
                 if (view.Width() == 1)
                 {
                     Number(value[0]);
                     return;
                 }
                 List(view.Width(), [&](std::size_t component) { Number(value[component]); });
             });
        EndObject();
    }

    void Numbers(std::string_view key, const NumberTable& numbers) override
    {
        Member(key);
        List(numbers.Count(),
             [&](std::size_t element)
             {
                 if (numbers.Width() == 1)
                     return Number(numbers, element, 0);
                 List(numbers.Width(), [&](std::size_t component) { Number(numbers, element, component); });
             });
    }

private:
    struct Level
    {
        bool is_array;
        bool is_empty = true;
    };

    void Member(std::string_view key)
    {
        if (levels_.empty())
            return;
        out_ << (levels_.back().is_empty ? "\n" : ",\n");
        levels_.back().is_empty = false;
        Indent();
        if (!levels_.back().is_array)
        {
            Quoted(key);
            out_ << ": ";
        }
    }

    void Begin(std::string_view key, char bracket)
    {
        Member(key);
        out_ << bracket;
        levels_.push_back({bracket == '['});
    }

    void End(char bracket)
    {
        const bool is_empty = levels_.back().is_empty;
        levels_.pop_back();
        if (!is_empty)
        {
            out_ << '\n';
            Indent();
        }
        out_ << bracket;
        if (levels_.empty())
            out_ << '\n';
    }

    void Indent()
    {
        for (std::size_t i = 0; i < levels_.size(); ++i)
            out_ << "  ";
    }

    template <class Entry>
    void List(std::size_t count, Entry&& entry)
    {
        out_ << '[';
        for (std::size_t i = 0; i < count; ++i)
        {
            out_ << (i == 0 ? "" : ", ");
            entry(i);
        }
        out_ << ']';
    }

    void Number(float value)
    {
        const std::string text = FloatText(value);
        if (std::isfinite(value))
            out_ << text;
        else
            Quoted(text);
    }

    void Number(const NumberTable& numbers, std::size_t element, std::size_t component)
    {
        if (numbers.Whole())
            out_ << numbers.Integer(element, component);
        else
            Number(numbers.Float(element, component));
    }

    void Units(std::u16string_view units)
    {
        List(units.size(), [&](std::size_t i) { out_ << static_cast<unsigned>(units[i]); });
    }

    void Quoted(std::string_view text)
    {
        out_ << Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
    }

    std::ostream& out_;
    std::vector<Level> levels_;
};

} // namespace

std::unique_ptr<DumpWriter> MakeJsonDump(std::ostream& out)
{
    return std::make_unique<JsonDump>(out);
}

} // namespace tv2
