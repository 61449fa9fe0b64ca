#pragma once

/// JSON as a tree that takes little more memory than its text, whatever the text is: 16 bytes a value, and its texts
/// end to end. Members keep the order of the file, and finding one among many is fast.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace gltf
{

enum class JsonKind : std::uint8_t
{
    Nothing, // absent, or null
    Truth,
    Whole, // a number without fraction that 64 bits hold
    Number,
    Text,
    Array,
    Object
};

class JsonTree;

/// One value of a tree, which must outlive it. Asking it for what it is not gives nothing, or an empty one.
class JsonValue
{
public:
    JsonValue() = default;

    JsonKind Kind() const;
    explicit operator bool() const { return Kind() != JsonKind::Nothing; }

    std::optional<bool> Truth() const;
    std::optional<std::int64_t> Whole() const;
    std::optional<double> Number() const; // of Whole too
    std::string_view Text() const;

    /// Elements of an array, members of an object in the order of the file.
    std::size_t Size() const;
    JsonValue operator[](std::size_t index) const;
    std::string_view Name(std::size_t index) const;

    /// The last of several members with one name.
    JsonValue operator[](const char* name) const { return Find(name); }
    JsonValue Find(std::string_view name) const;

private:
    friend class JsonTree;
    JsonValue(const JsonTree& tree, std::uint32_t entry) : tree_(&tree), entry_(entry) {}

    const JsonTree* tree_ = nullptr;
    std::uint32_t entry_ = 0;
};

class JsonTree
{
public:
    static constexpr std::size_t kDeepest = 100;

    /// Throws Error, with the byte where it applies: no JSON, nested deeper than kDeepest, a number out of range.
    explicit JsonTree(std::string_view text);

    JsonTree(const JsonTree&) = delete;
    JsonTree& operator=(const JsonTree&) = delete;

    JsonValue Root() const;

private:
    friend class JsonValue;
    class Maker;

    struct Entry
    {
        union
        {
            bool truth;
            std::int64_t whole;
            double number;
            std::uint32_t first = 0; // of a text: its first byte; of a container: its first entry
        };
        std::uint32_t size = 0; // bytes, elements or members; a member is two entries, its name and its value
        JsonKind kind = JsonKind::Nothing;
    };

    std::string_view TextOf(const Entry& entry) const;
    std::string_view NameOf(const Entry& object, std::size_t member) const;

    std::vector<Entry> entries_; // the root comes last
    std::string texts_;
};

} // namespace gltf
