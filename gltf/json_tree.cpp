#include "gltf/json_tree.h"

#include "gltf/error.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>
#include <numeric>

namespace gltf
{
namespace
{

// Objects with more members than this carry the order of their names, so that no document takes time that grows
// faster than it.
constexpr std::size_t kMostSearchedInOrder = 16;

constexpr std::size_t kMostBytes = std::size_t{1} << 30; // entries and texts are counted with 32 bits

} // namespace

// Called by the parser for one value after the other. What is inside of a container gathers in `open_`; it moves to
// the tree when the container ends.
class JsonTree::Maker
{
public:
    explicit Maker(JsonTree& tree) : tree_(tree) {}

    bool null() { return Add(Entry()); }
    bool boolean(bool truth)
    {
        Entry entry;
        entry.truth = truth;
        entry.kind = JsonKind::Truth;
        return Add(entry);
    }
    bool number_integer(std::int64_t whole)
    {
        Entry entry;
        entry.whole = whole;
        entry.kind = JsonKind::Whole;
        return Add(entry);
    }
    bool number_unsigned(std::uint64_t whole)
    {
        return whole <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())
                   ? number_integer(static_cast<std::int64_t>(whole))
                   : number_float(static_cast<double>(whole), {});
    }
    bool number_float(double number, const std::string&)
    {
        Entry entry;
        entry.number = number;
        entry.kind = JsonKind::Number;
        return Add(entry);
    }
    bool string(const std::string& text)
    {
        Entry entry;
        entry.first = static_cast<std::uint32_t>(tree_.texts_.size());
        entry.size = static_cast<std::uint32_t>(text.size());
        entry.kind = JsonKind::Text;
        tree_.texts_ += text;
        return Add(entry);
    }
    static bool binary(const std::vector<std::uint8_t>&) { return false; } // JSON has none
    bool key(const std::string& name) { return string(name); }
    bool start_object(std::size_t) { return Start(); }
    bool start_array(std::size_t) { return Start(); }
    bool end_object() { return End(JsonKind::Object); }
    bool end_array() { return End(JsonKind::Array); }

    [[noreturn]] static bool parse_error(std::size_t at, const std::string&,
                                         const nlohmann::json::exception& error)
    {
        if (dynamic_cast<const nlohmann::json::out_of_range*>(&error))
            throw Error("a number out of range (byte " + std::to_string(at) + ")");
        throw Error("damaged JSON (byte " + std::to_string(at) + ")");
    }

    void Finish()
    {
        tree_.entries_.push_back(open_.back());
        tree_.entries_.shrink_to_fit();
        tree_.texts_.shrink_to_fit();
    }

private:
    bool Add(const Entry& entry)
    {
        open_.push_back(entry);
        return true;
    }

    bool Start()
    {
        if (starts_.size() == kDeepest)
            throw Error("its JSON is nested more than " + std::to_string(kDeepest) + " deep");
        starts_.push_back(open_.size());
        return true;
    }

    bool End(JsonKind kind)
    {
        const auto inside = open_.begin() + static_cast<std::ptrdiff_t>(starts_.back());
        const std::size_t count = open_.size() - starts_.back();
        Entry container;
        container.first = static_cast<std::uint32_t>(tree_.entries_.size());
        container.size = static_cast<std::uint32_t>(kind == JsonKind::Object ? count / 2 : count);
        container.kind = kind;
        tree_.entries_.insert(tree_.entries_.end(), inside, open_.end());
        if (kind == JsonKind::Object && container.size > kMostSearchedInOrder)
            AddOrderOfNames(container);
        open_.erase(inside, open_.end());
        starts_.pop_back();
        return Add(container);
    }

    // Behind the members, one entry for each: its place among them, by ascending name.
    void AddOrderOfNames(const Entry& object)
    {
        std::vector<std::uint32_t> order(object.size);
        std::iota(order.begin(), order.end(), 0u);
        std::stable_sort(order.begin(), order.end(),
                         [&](std::uint32_t a, std::uint32_t b)
                         { return tree_.NameOf(object, a) < tree_.NameOf(object, b); });
        for (const std::uint32_t member : order)
        {
            Entry place;
            place.whole = member;
            tree_.entries_.push_back(place);
        }
    }

    JsonTree& tree_;
    std::vector<Entry> open_;
    std::vector<std::size_t> starts_; // in `open_`, of the containers that have not ended
};

JsonTree::JsonTree(std::string_view text)
{
    if (text.size() > kMostBytes)
        throw Error("its JSON is longer than 1 GiB");
    Maker maker(*this);
    nlohmann::json::sax_parse(text, &maker);
    maker.Finish();
}

JsonValue JsonTree::Root() const
{
    return {*this, static_cast<std::uint32_t>(entries_.size() - 1)};
}

std::string_view JsonTree::TextOf(const Entry& entry) const
{
    return std::string_view(texts_).substr(entry.first, entry.size);
}

std::string_view JsonTree::NameOf(const Entry& object, std::size_t member) const
{
    return TextOf(entries_[object.first + 2 * member]);
}

JsonKind JsonValue::Kind() const
{
    return tree_ ? tree_->entries_[entry_].kind : JsonKind::Nothing;
}

std::optional<bool> JsonValue::Truth() const
{
    if (Kind() != JsonKind::Truth)
        return std::nullopt;
    return tree_->entries_[entry_].truth;
}

std::optional<std::int64_t> JsonValue::Whole() const
{
    if (Kind() != JsonKind::Whole)
        return std::nullopt;
    return tree_->entries_[entry_].whole;
}

std::optional<double> JsonValue::Number() const
{
    if (const std::optional<std::int64_t> whole = Whole())
        return static_cast<double>(*whole);
    if (Kind() != JsonKind::Number)
        return std::nullopt;
    return tree_->entries_[entry_].number;
}

std::string_view JsonValue::Text() const
{
    return Kind() == JsonKind::Text ? tree_->TextOf(tree_->entries_[entry_]) : std::string_view();
}

std::size_t JsonValue::Size() const
{
    const JsonKind kind = Kind();
    return kind == JsonKind::Array || kind == JsonKind::Object ? tree_->entries_[entry_].size : 0;
}

JsonValue JsonValue::operator[](std::size_t index) const
{
    if (index >= Size())
        return {};
    const std::size_t offset = Kind() == JsonKind::Array ? index : 2 * index + 1;
    return {*tree_, static_cast<std::uint32_t>(tree_->entries_[entry_].first + offset)};
}

std::string_view JsonValue::Name(std::size_t index) const
{
    return Kind() == JsonKind::Object && index < Size() ? tree_->NameOf(tree_->entries_[entry_], index)
                                                        : std::string_view();
}

JsonValue JsonValue::Find(std::string_view name) const
{
    if (Kind() != JsonKind::Object)
        return {};
    const JsonTree::Entry& object = tree_->entries_[entry_];
    if (object.size <= kMostSearchedInOrder)
    {
        for (std::size_t i = object.size; i-- > 0;)
            if (tree_->NameOf(object, i) == name)
                return (*this)[i];
        return {};
    }
    const auto order = tree_->entries_.begin() + object.first + 2 * std::ptrdiff_t{object.size};
    const auto after =
        std::upper_bound(order, order + object.size, name,
                         [&](std::string_view wanted, const JsonTree::Entry& place)
                         { return wanted < tree_->NameOf(object, static_cast<std::size_t>(place.whole)); });
    if (after == order)
        return {};
    const auto member = static_cast<std::size_t>((after - 1)->whole);
    return tree_->NameOf(object, member) == name ? (*this)[member] : JsonValue();
}

} // namespace gltf
