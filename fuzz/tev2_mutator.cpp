#include "fuzz/tev2_mutations.h"

#include <array>

// Changes scene files from within: whatever becomes of the records, most files keep their magic and sound chunk
// frames, so that the search does not end at the door.

namespace
{

constexpr std::size_t kMagicSize = 4;
constexpr std::uint8_t kMagic[kMagicSize] = {0x01, 0x32, 0x56, 0x54};
constexpr std::size_t kFrameHeader = 8;

class SceneFile
{
public:
    explicit SceneFile(tv2_fuzz::Input& input) : input_(input)
    {
        for (std::size_t at = kMagicSize; at + kFrameHeader <= input.Size() && frame_count_ < frames_.size();)
        {
            const std::size_t frame_size = input.Word(at);
            if (frame_size < kFrameHeader || frame_size > input.Size() - at)
                break;
            frames_[frame_count_++] = {at, frame_size};
            at += frame_size;
        }
    }

    void Mutate()
    {
        if (input_.Size() < kMagicSize || input_.Below(50) == 0)
            return input_.MutateAny(0, input_.Size());
        std::memcpy(input_.Data(), kMagic, kMagicSize);
        if (frame_count_ == 0)
            return FrameTheRest();
        const Frame frame = frames_[input_.Below(frame_count_)];
        switch (input_.Below(10))
        {
        case 0:
            return input_.Replace(frame.begin, frame.End(), nullptr, 0);
        case 1:
            return CopyFrame(frame);
        case 2:
            return RetypeFrame(frame);
        case 3:
            return CopyPiece(frame);
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

    void FrameTheRest()
    {
        const std::size_t rest = input_.Size() - kMagicSize;
        if (input_.Room() < kFrameHeader)
            return;
        const std::uint8_t header[kFrameHeader] = {};
        input_.Replace(kMagicSize, kMagicSize, header, kFrameHeader);
        input_.PutWord(kMagicSize, rest + kFrameHeader);
        input_.PutWord(kMagicSize + 4, input_.Below(25));
    }

    void CopyFrame(const Frame& frame)
    {
        if (frame.size <= input_.Room())
            input_.Copy(frame.begin, frame.size, frames_[input_.Below(frame_count_)].begin);
    }

    void RetypeFrame(const Frame& frame)
    {
        constexpr float kVersions[] = {0.0f, 1.0f, 1.04f, 1.05f, 1.1f, 1.12f, 1.13f, 1.15f, 1.16f};
        if (input_.Word(frame.begin + 4) == 0 && frame.BodySize() >= sizeof(float))
            std::memcpy(input_.Data() + frame.Body(), &kVersions[input_.Below(std::size(kVersions))],
                        sizeof(float));
        else
            input_.PutWord(frame.begin + 4, input_.Below(25));
    }

    /// A piece of one body into another: a record or a track at times.
    void CopyPiece(const Frame& frame)
    {
        const Frame from = frames_[input_.Below(frame_count_)];
        if (from.BodySize() == 0)
            return;
        const std::size_t begin = from.Body() + input_.Below(from.BodySize());
        const std::size_t count = 1 + input_.Below(from.End() - begin);
        if (count > input_.Room())
            return;
        input_.PutWord(frame.begin, frame.size + count);
        input_.Copy(begin, count, frame.Body() + input_.Below(frame.BodySize() + 1));
    }

    void MutateBody(const Frame& frame)
    {
        const std::size_t before = input_.Size();
        tv2_fuzz::Body(input_, frame.Body(), frame.End()).Mutate();
        input_.PutWord(frame.begin, frame.size + input_.Size() - before);
    }

    tv2_fuzz::Input& input_;
    std::array<Frame, 64> frames_;
    std::size_t frame_count_ = 0;
};

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t max_size,
                                               unsigned seed)
{
    tv2_fuzz::Input input(data, size, max_size, seed);
    SceneFile(input).Mutate();
    return input.Size();
}
