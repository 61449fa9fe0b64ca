#pragma once

/// The lowest layer: an FBX file, binary or text, as a tree of named records with values.
///
///     const RecordTree tree(bytes);
///     for (const Record& object : tree.Root().Child("Objects").Children())
///         if (object.Name() == "Model")
///             std::cout << object.ValueAt(1).Text() << '\n';
///
/// Records and values are views into the file's bytes, which have to outlive them. The frame of every record is checked
/// when the tree is made; values are parsed on demand.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mobu_host::fbx
{

inline constexpr double kTicksPerSecond = 46186158000.0; // of most files, and of the host

/// One value of a record. A value of another sort than asked for is none: a damaged property counts as missing.
class Value
{
public:
    Value() = default;
    Value(char code, std::string_view bytes) : code_(code), bytes_(bytes) {}

    explicit operator bool() const { return code_ != 0; }

    /// As binary files mark it: C Y I L F D scalars, S text, R bytes, f d l i b c arrays. Of text files: N a number,
    /// S a text without its quotes, W a bare word, * the length of an array that the record's child "a" holds.
    char Code() const { return code_; }
    /// Of a scalar its little-endian bytes, of a text its characters; of an array all after its header.
    std::string_view Bytes() const { return bytes_; }

    bool IsArray() const;
    std::optional<double>
    Number() const; // also of whole numbers; not finite where the file says so or overflows
    std::optional<std::int64_t> Whole() const;       // numbers are cut toward zero; none out of range
    std::optional<std::int64_t> WholeNumber() const; // of a text file, written without point and exponent
    std::optional<std::string_view> Text() const;    // of a text or a word, verbatim
    char Letter() const; // a bare word of one letter, in binary files a byte; 0 where it is none

private:
    char code_ = 0;
    std::string_view bytes_;
};

/// The header of an array in a binary file.
struct ArrayHeader
{
    std::uint32_t count = 0;
    std::uint32_t encoding = 0; // 0 plain, 1 deflated
    std::uint32_t size = 0;     // bytes as stored
};

class Record;
class RecordTree;

/// Goes through the values of one record.
class ValueCursor
{
public:
    explicit ValueCursor(const Record& record);
    bool Next(Value& value); // false after the last; throws ParseError where a value leaves the record

    const ArrayHeader& Array() const { return array_; } // of the value last given, when it is a binary array
    std::size_t Offset() const { return at_; }          // in the file, after the value last given

private:
    bool NextBinary(Value& value);
    bool NextText(Value& value);
    std::string_view Take(std::uint64_t size);

    std::string_view file_;
    bool is_text_;
    std::size_t at_;
    std::size_t end_;
    std::uint64_t left_;
    ArrayHeader array_;
};

class Record
{
public:
    Record() = default; // none
    Record(const RecordTree* tree, std::uint32_t index) : tree_(tree), index_(index) {}

    explicit operator bool() const { return tree_ != nullptr; }
    std::string_view Name() const;
    std::size_t Offset() const; // of its name in the file
    std::uint64_t ValueCount() const;
    Value ValueAt(std::size_t position) const; // none past the last
    double NumberAt(std::size_t position, double otherwise) const;
    std::string_view TextAt(std::size_t position) const; // empty where it is none

    Record FirstChild() const;
    Record Next() const;                       // its next sibling
    Record Child(std::string_view name) const; // the first of that name, or none; none of none

    class Iterator;
    struct ChildRange;
    ChildRange Children() const;

    const RecordTree& Tree() const { return *tree_; }
    std::uint32_t Index() const { return index_; }

private:
    const RecordTree* tree_ = nullptr;
    std::uint32_t index_ = 0;
};

class Record::Iterator
{
public:
    explicit Iterator(Record record) : record_(record) {}
    const Record& operator*() const { return record_; }
    Iterator& operator++()
    {
        record_ = record_.Next();
        return *this;
    }
    bool operator!=(const Iterator& other) const
    {
        return static_cast<bool>(record_) != static_cast<bool>(other.record_);
    }

private:
    Record record_;
};

struct Record::ChildRange
{
    Record first;
    Iterator begin() const { return Iterator(first); }
    Iterator end() const { return Iterator(Record()); }
};

inline Record::ChildRange Record::Children() const
{
    return {FirstChild()};
}

/// Where one record is in the file.
struct RecordFrame
{
    std::uint32_t name = 0; // offsets
    std::uint32_t values = 0;
    std::uint32_t values_end = 0;
    std::uint32_t value_count = 0;
    std::uint32_t first_child = 0; // indices; 0 for none: record 0 is the root
    std::uint32_t next = 0;
    std::uint16_t name_size = 0;
};

class RecordTree
{
public:
    /// Throws ParseError for what is no FBX file, for versions below 6.0 and from 8.0 on, and where the frame of a
    /// record is wrong.
    explicit RecordTree(std::string_view file);

    bool IsText() const { return is_text_; }
    unsigned Version() const { return version_; } // 6000 to 7999
    double TicksPerSecond() const { return ticks_per_second_; }
    std::string_view File() const { return file_; }
    Record Root() const { return {this, 0}; }
    const RecordFrame& Frame(std::uint32_t index) const { return frames_[index]; }
    std::size_t Size() const { return frames_.size(); } // records, the root counted

private:
    void ReadVersion();
    void ReadTicks();

    std::string_view file_;
    bool is_text_ = false;
    unsigned version_ = 0;
    double ticks_per_second_ = kTicksPerSecond;
    std::vector<RecordFrame> frames_;
};

/// A text of the file as people see it: text files write some characters in other words.
std::string PlainText(std::string_view text, const RecordTree& tree);

} // namespace mobu_host::fbx
