#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <random>
#include <vector>

// Changes scene files from within: whatever becomes of the records, most files keep their magic and sound chunk
// frames, so that the search does not end at the door.

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);

namespace
{

constexpr std::size_t kMagicSize = 4;
constexpr std::uint8_t kMagic[kMagicSize] = {0x01, 0x32, 0x56, 0x54};
constexpr std::size_t kFrameHeader = 8;

class SceneFile
{
public:
    SceneFile(std::uint8_t* data, std::size_t size, std::size_t max_size, unsigned seed)
        : data_(data), size_(size), room_(max_size - size), random_(seed)
    {
        for (std::size_t at = kMagicSize; at + kFrameHeader <= size && frame_count_ < frames_.size();)
        {
            const std::size_t frame_size = Word(at);
            if (frame_size < kFrameHeader || frame_size > size - at)
                break;
            frames_[frame_count_++] = {at, frame_size};
            at += frame_size;
        }
    }

    std::size_t Mutate()
    {
        if (size_ < kMagicSize || Below(50) == 0)
            return LLVMFuzzerMutate(data_, size_, size_ + room_);
        std::memcpy(data_, kMagic, kMagicSize);
        if (frame_count_ == 0)
            return FrameTheRest();
        const Frame frame = frames_[Below(frame_count_)];
        switch (Below(10))
        {
        case 0:
            return RemoveFrame(frame);
        case 1:
            return CopyFrame(frame);
        case 2:
            return RetypeFrame(frame);
        case 3:
            return CopyPiece(frame);
        case 4:
        case 5:
        case 6:
            return SetWord(frame);
        default:
            return MutateBody(frame);
        }
    }

private:
    struct Frame
    {
        std::size_t begin = 0;
        std::size_t size = 0;

        std::size_t Body() const { return begin + kFrameHeader; }
        std::size_t BodySize() const { return size - kFrameHeader; }
        std::size_t End() const { return begin + size; }
    };

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

    /// Puts bytes in the place of others; there must be room. The bytes are not of this file.
    void Replace(std::size_t begin, std::size_t end, const std::uint8_t* bytes, std::size_t count)
    {
        std::memmove(data_ + begin + count, data_ + end, size_ - end);
        if (count != 0)
            std::memcpy(data_ + begin, bytes, count);
        size_ = size_ - (end - begin) + count;
    }

    std::size_t FrameTheRest()
    {
        const std::size_t rest = size_ - kMagicSize;
        if (room_ >= kFrameHeader)
        {
            const std::uint8_t header[kFrameHeader] = {};
            Replace(kMagicSize, kMagicSize, header, kFrameHeader);
            PutWord(kMagicSize, rest + kFrameHeader);
            PutWord(kMagicSize + 4, Below(25));
        }
        return size_;
    }

    std::size_t RemoveFrame(const Frame& frame)
    {
        Replace(frame.begin, frame.End(), nullptr, 0);
        return size_;
    }

    std::size_t CopyFrame(const Frame& frame)
    {
        if (frame.size <= room_)
        {
            const std::vector<std::uint8_t> copy(data_ + frame.begin, data_ + frame.End());
            const std::size_t to = frames_[Below(frame_count_)].begin;
            Replace(to, to, copy.data(), copy.size());
        }
        return size_;
    }

    std::size_t RetypeFrame(const Frame& frame)
    {
        constexpr float kVersions[] = {0.0f, 1.0f, 1.04f, 1.05f, 1.1f, 1.12f, 1.13f, 1.15f, 1.16f};
        if (Word(frame.begin + 4) == 0 && frame.BodySize() >= sizeof(float))
            std::memcpy(data_ + frame.Body(), &kVersions[Below(std::size(kVersions))], sizeof(float));
        else
            PutWord(frame.begin + 4, Below(25));
        return size_;
    }

    /// A piece of one body into another: a record or a track at times.
    std::size_t CopyPiece(const Frame& frame)
    {
        const Frame from = frames_[Below(frame_count_)];
        if (from.BodySize() == 0)
            return size_;
        const std::size_t begin = from.Body() + Below(from.BodySize());
        const std::size_t count = 1 + Below(from.End() - begin);
        if (count > room_)
            return size_;
        const std::vector<std::uint8_t> piece(data_ + begin, data_ + begin + count);
        const std::size_t to = frame.Body() + Below(frame.BodySize() + 1);
        PutWord(frame.begin, frame.size + count);
        Replace(to, to, piece.data(), count);
        return size_;
    }

    std::size_t SetWord(const Frame& frame)
    {
        constexpr std::uint32_t kWords[] = {0, 1, 2, 3, 5, 6, 7, 8, 11, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
        if (frame.BodySize() < 4)
            return size_;
        const std::size_t at = frame.Body() + Below(frame.BodySize() - 3);
        const std::size_t choice = Below(std::size(kWords) + 3);
        if (choice < std::size(kWords))
            PutWord(at, kWords[choice]);
        else if (choice == std::size(kWords))
            PutWord(at, (frame.End() - at) / 4);
        else
            PutWord(at, Word(at) + (choice % 2 != 0 ? 1 : -1u));
        return size_;
    }

    std::size_t MutateBody(const Frame& frame)
    {
        if (frame.BodySize() + room_ == 0)
            return size_; // the mutations would write a first byte even where there is none
        const std::vector<std::uint8_t> rest(data_ + frame.End(), data_ + size_);
        const std::size_t body =
            LLVMFuzzerMutate(data_ + frame.Body(), frame.BodySize(), frame.BodySize() + room_);
        PutWord(frame.begin, body + kFrameHeader);
        if (!rest.empty())
            std::memcpy(data_ + frame.Body() + body, rest.data(), rest.size());
        return frame.Body() + body + rest.size();
    }

    std::uint8_t* data_;
    std::size_t size_;
    std::size_t room_;
    std::minstd_rand random_;
    std::array<Frame, 64> frames_;
    std::size_t frame_count_ = 0;
};

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t max_size,
                                               unsigned seed)
{
    return SceneFile(data, size, max_size, seed).Mutate();
}
