#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <random>
#include <vector>

// What the mutators of scene files and of bodies share.

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);

namespace tv2_fuzz
{

/// An input and the room behind it.
class Input
{
public:
    Input(std::uint8_t* data, std::size_t size, std::size_t max_size, unsigned seed)
        : data_(data), size_(size), room_(max_size - size), random_(seed)
    {
    }

    std::uint8_t* Data() { return data_; }
    std::size_t Size() const { return size_; }
    std::size_t Room() const { return room_; }

    std::size_t Below(std::size_t count) { return random_() % count; }

    std::uint32_t Word(std::size_t at) const
    {
        std::uint32_t word = 0;
        std::memcpy(&word, data_ + at, sizeof word);
        return word;
    }

    void PutWord(std::size_t at, std::size_t value)
    {
        const auto word = static_cast<std::uint32_t>(value);
        std::memcpy(data_ + at, &word, sizeof word);
    }

    /// Puts bytes in the place of others; there must be room. The bytes are not of this input.
    void Replace(std::size_t begin, std::size_t end, const std::uint8_t* bytes, std::size_t count)
    {
        std::memmove(data_ + begin + count, data_ + end, size_ - end);
        if (count != 0)
            std::memcpy(data_ + begin, bytes, count);
        room_ = room_ + (end - begin) - count;
        size_ = size_ - (end - begin) + count;
    }

    /// Puts a copy of some of its bytes in front of others; there must be room.
    void Copy(std::size_t begin, std::size_t count, std::size_t to)
    {
        const std::vector<std::uint8_t> piece(data_ + begin, data_ + begin + count);
        Replace(to, to, piece.data(), count);
    }

    /// Any mutation, of one part.
    void MutateAny(std::size_t begin, std::size_t end)
    {
        if (end - begin + room_ == 0)
            return; // the mutations would write a first byte even where there is none
        const std::vector<std::uint8_t> rest(data_ + end, data_ + size_);
        const std::size_t count = LLVMFuzzerMutate(data_ + begin, end - begin, end - begin + room_);
        if (!rest.empty())
            std::memcpy(data_ + begin + count, rest.data(), rest.size());
        const std::size_t total = size_ + room_;
        size_ = begin + count + rest.size();
        room_ = total - size_;
    }

private:
    std::uint8_t* data_;
    std::size_t size_;
    std::size_t room_;
    std::minstd_rand random_;
};

/// Mutations of the body of a record from `begin` to `end` of an input: mostly of its 4-byte words, which begin at
/// even offsets because text units take two bytes.
class Body
{
public:
    Body(Input& input, std::size_t begin, std::size_t end) : input_(input), begin_(begin), size_(end - begin)
    {
    }

    void Mutate()
    {
        switch (input_.Below(12))
        {
        case 0:
            return InsertWords();
        case 1:
            return RemoveWords();
        case 2:
        case 3:
            return RepeatPiece();
        case 4:
        case 5:
        case 6:
        case 7:
            return SetWord();
        default:
            return input_.MutateAny(begin_, begin_ + size_);
        }
    }

private:
    static constexpr std::size_t kWord = sizeof(std::uint32_t);

    std::size_t EvenBelow(std::size_t count) { return 2 * input_.Below((count + 1) / 2); }

    void SetWord()
    {
        constexpr std::uint32_t kLayout = 0x4C590001;
        constexpr std::uint32_t kWords[] = {
            0,  1,  2,  3,  4,       5,           6,          7,          8,          11,
            12, 63, 64, 65, kLayout, kLayout + 1, 0x7F800000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
        if (size_ < kWord)
            return;
        const std::size_t place = EvenBelow(size_ - kWord + 1);
        const std::size_t at = begin_ + place;
        const std::size_t choice = input_.Below(std::size(kWords) + 6);
        if (choice < std::size(kWords))
            input_.PutWord(at, kWords[choice]);
        else if (choice == std::size(kWords))
            input_.PutWord(at, (size_ - place) / kWord);
        else
            input_.PutWord(at, input_.Word(at) + (choice % 2 != 0 ? 1 : -1u));
    }

    void InsertWords()
    {
        constexpr std::size_t kMost = 16;
        const std::size_t count = kWord * (1 + input_.Below(kMost));
        const std::uint8_t zeros[kWord * kMost] = {};
        const std::size_t at = begin_ + EvenBelow(size_ + 1);
        if (count <= input_.Room())
            input_.Replace(at, at, zeros, count);
    }

    void RemoveWords()
    {
        if (size_ < kWord)
            return;
        const std::size_t at = EvenBelow(size_ - kWord + 1);
        const std::size_t count = kWord * (1 + input_.Below((size_ - at) / kWord));
        input_.Replace(begin_ + at, begin_ + at + count, nullptr, 0);
        CountBefore(at, -1u);
    }

    /// An element of an array once more, if the place is right.
    void RepeatPiece()
    {
        if (size_ < kWord)
            return;
        const std::size_t at = EvenBelow(size_ - 1);
        const std::size_t count = 2 * (1 + input_.Below((size_ - at) / 2));
        if (count > input_.Room())
            return;
        input_.Copy(begin_ + at, count, begin_ + at + count);
        CountBefore(at, 1);
    }

    /// Changes the word in front of a place, which may be a count, or a few words before that.
    void CountBefore(std::size_t place, std::uint32_t change)
    {
        const std::size_t back = input_.Below(3) == 0 ? EvenBelow(32) : 0;
        if (place < kWord + back || input_.Below(4) == 0)
            return;
        const std::size_t at = begin_ + place - kWord - back;
        input_.PutWord(at, input_.Word(at) + change);
    }

    Input& input_;
    std::size_t begin_;
    std::size_t size_;
};

} // namespace tv2_fuzz
