#include "host/import/bvh/bvh_reader.h"

#include "host/import/base/import_options.h"
#include "host/import/bvh/text_scanner.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <utility>

namespace mobu_host::bvh
{
namespace
{

constexpr std::size_t kLongestName = 256;  // bytes: end sites repeat the name of their joint
constexpr std::size_t kMostChannels = 100; // of a joint
constexpr std::size_t kLeastModel = 6;     // bytes: "ROOT{}"
constexpr std::size_t kMostFrames = std::numeric_limits<std::int32_t>::max();
constexpr double kCentimetresPerMetre = 100.0;
constexpr double kSmallestFigure = 0.3; // metres
constexpr double kLargestFigure = 10.0;

struct Channel
{
    bool turns = false; // else it moves
    std::uint8_t axis = 0;
};

// All numbers of the motion as the file has them.
struct Frames
{
    std::vector<Channel> channels;
    std::vector<double> values; // a frame after the other, one for each channel
    double frame_time = 0.0;    // seconds
    std::size_t count = 0;
};

// Frames that are this close are meant: frames are whole ticks only nearly.
constexpr double kOnFrame = 1.0e-6;

class JointMotion
{
public:
    JointMotion(std::shared_ptr<const Frames> frames, std::size_t first, std::size_t count,
                const Vector& offset)
        : frames_(std::move(frames)), first_(first), count_(count), offset_(offset)
    {
    }

    Affine operator()(double seconds) const
    {
        const double last = static_cast<double>(frames_->count - 1);
        const double place = std::clamp(seconds / frames_->frame_time, 0.0, last);
        const double frame = std::floor(place + kOnFrame);
        const double fraction = place - frame;
        MoveTo(static_cast<std::size_t>(frame));
        if (fraction <= kOnFrame || frame >= last)
            return from_.local;
        const Vector& place_from = from_.local.place;
        return {TurnOf(TurnBetween(from_.turn, to_.turn, fraction)),
                place_from + (to_.local.place - place_from) * fraction};
    }

private:
    struct Pose
    {
        Affine local;
        Quaternion turn{}; // of `local`
    };

    // Times mostly come in order, several in a frame: each frame then needs its sines and cosines once.
    void MoveTo(std::size_t frame) const
    {
        if (frame == frame_)
            return;
        from_ = frame == frame_ + 1 ? to_ : PoseAt(frame);
        if (frame + 1 < frames_->count)
            to_ = PoseAt(frame + 1);
        frame_ = frame;
    }

    Pose PoseAt(std::size_t frame) const
    {
        const Affine local = At(frame);
        return {local, QuaternionOf(local.linear)};
    }

    // Positions replace the offset. Rotations apply from the last channel to the first.
    Affine At(std::size_t frame) const
    {
        const double* const values = &frames_->values[frame * frames_->channels.size()];
        Affine local;
        local.place = offset_;
        for (std::size_t i = first_; i < first_ + count_; ++i)
        {
            const Channel channel = frames_->channels[i];
            if (!channel.turns)
            {
                local.place[channel.axis] = values[i];
                continue;
            }
            Vector degrees{};
            degrees[channel.axis] = values[i];
            local.linear = local.linear * EulerTurn(degrees, 0);
        }
        return local;
    }

    std::shared_ptr<const Frames> frames_;
    std::size_t first_, count_; // channels
    Vector offset_;
    mutable std::size_t frame_ = kMostFrames; // that `from_` is at, `to_` one later
    mutable Pose from_, to_;
};

class Reader
{
public:
    Reader(std::string_view file, const ImportOptions& options, ImportNotes& notes)
        : text_(WithoutMark(file)), options_(options), notes_(notes)
    {
        const auto braces = static_cast<std::size_t>(std::count(file.begin(), file.end(), '{'));
        const std::size_t models = std::min({braces, file.size() / kLeastModel, options.most_models});
        scene_.models.reserve(models); // growing lists would take three times as much
        joints_.reserve(models);
    }

    SceneDescription Read()
    {
        text_.Expect("HIERARCHY");
        do
        {
            text_.Expect("ROOT");
            ReadTree();
        } while (!text_.Take("MOTION"));
        ReadMotion();
        NoteImplausibleSize();
        return std::move(scene_);
    }

private:
    struct Joint
    {
        bool has_channels = false;
        std::size_t first_channel = 0;
        std::size_t channels = 0;
    };

    static std::string_view WithoutMark(std::string_view file)
    {
        constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
        file.remove_prefix(file.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
        return file;
    }

    // A root with all below it, from its name on.
    void ReadTree()
    {
        std::vector<std::uint32_t> open; // joints that the current one is below, and itself
        Begin(Name(), open);
        while (!open.empty())
            if (text_.Take("}"))
                open.pop_back();
            else if (text_.Take("JOINT"))
                Begin(Name(), open);
            else if (text_.Take("End"))
                ReadEndSite(open);
            else if (text_.Take("OFFSET"))
                scene_.models[open.back()].rest.place = ReadOffset();
            else if (text_.Take("CHANNELS"))
                ReadChannels(open.back());
            else
                Unexpected();
    }

    [[noreturn]] void Unexpected()
    {
        const std::string_view word = text_.Word();
        if (word.empty())
            text_.Fail("the file ends inside its hierarchy");
        text_.Fail(Quoted(word) + " where OFFSET, CHANNELS, JOINT, End Site or } is expected");
    }

    std::string Name()
    {
        const std::string_view name = text_.RestOfLine();
        if (name.size() > kLongestName)
            text_.Fail("a name has more than " + std::to_string(kLongestName) + " bytes");
        return std::string(name);
    }

    void Begin(std::string name, std::vector<std::uint32_t>& open)
    {
        text_.Expect("{");
        if (open.size() == kDeepestModel)
            text_.Fail("joints are nested more than " + std::to_string(kDeepestModel) + " deep");
        CheckModelCount(scene_.models.size() + 1, options_);
        ModelDescription& model = scene_.models.emplace_back();
        model.name = std::move(name);
        model.parent = open.empty() ? kNoModel : open.back();
        open.push_back(static_cast<std::uint32_t>(joints_.size()));
        joints_.emplace_back();
    }

    void ReadEndSite(std::vector<std::uint32_t>& open)
    {
        text_.Expect("Site");
        std::string name = Name(); // which most files leave out
        Begin(name.empty() ? "EndSite_" + scene_.models[open.back()].name : std::move(name), open);
        if (text_.Take("OFFSET"))
            scene_.models[open.back()].rest.place = ReadOffset();
        text_.Expect("}");
        open.pop_back();
    }

    Vector ReadOffset()
    {
        Vector offset;
        for (double& number : offset)
            number = text_.Number("OFFSET");
        return offset;
    }

    void ReadChannels(std::uint32_t model)
    {
        if (joints_[model].has_channels)
            text_.Fail("joint " + Quoted(scene_.models[model].name) + " has CHANNELS twice");
        const std::size_t count = text_.Count("CHANNELS", kMostChannels);
        joints_[model] = {true, frames_->channels.size(), count};
        for (std::size_t i = 0; i < count; ++i)
            frames_->channels.push_back(ReadChannel());
    }

    Channel ReadChannel()
    {
        constexpr std::string_view kNames[] = {"Xposition", "Yposition", "Zposition",
                                               "Xrotation", "Yrotation", "Zrotation"};
        const std::string_view word = text_.Word();
        const auto* const name =
            std::find_if(std::begin(kNames), std::end(kNames),
                         [word](std::string_view known) { return SameWord(word, known); });
        if (name == std::end(kNames))
            text_.Fail(Quoted(word) +
                       " is not a channel (Xposition to Zposition, Xrotation to Zrotation are)");
        const auto index = static_cast<std::size_t>(name - std::begin(kNames));
        return {index >= 3, static_cast<std::uint8_t>(index % 3)};
    }

    void ReadMotion()
    {
        text_.ExpectLabel("Frames");
        frames_->count = text_.Count("Frames", kMostFrames);
        const std::size_t width = frames_->channels.size();
        if (width == 0 && frames_->count > 1)
            text_.Fail(std::to_string(frames_->count) + " frames, but no joint has a channel");
        text_.Expect("Frame");
        ReadFrameTime();
        ReadValues(width);
        AddTake();
    }

    // Exported times are single precision, which must be able to distinguish the frames.
    void ReadFrameTime()
    {
        text_.ExpectLabel("Time");
        const double seconds = text_.Number("Frame Time");
        const double end = static_cast<double>(frames_->count) * seconds;
        if (!(seconds >= 1.0 / kHighestRate))
            text_.Fail("a frame time must be " + std::to_string(1.0 / kHighestRate) + " seconds or more");
        if (!(end <= kLongestTime))
            text_.Fail("the motion lasts longer than a million seconds");
        const auto single = static_cast<float>(end);
        if (seconds <
            static_cast<double>(std::nextafter(single, std::numeric_limits<float>::infinity()) - single))
            text_.Fail(
                "the frame time is too short for so long a motion: times in single precision would coincide");
        frames_->frame_time = seconds;
        scene_.rate = 1.0 / seconds;
    }

    void ReadValues(std::size_t width)
    {
        std::vector<double>& values = frames_->values;
        for (std::size_t frame = 0; frame < frames_->count; ++frame)
        {
            for (std::size_t channel = 0; channel < width; ++channel)
            {
                if (text_.AtEnd())
                    text_.Fail("the motion ends in frame " + std::to_string(frame + 1) + " of " +
                               std::to_string(frames_->count) + ", after " + std::to_string(channel) +
                               " of " + std::to_string(width) + " values");
                values.push_back(text_.Number("a value of the motion"));
            }
        }
        values.shrink_to_fit();
        if (text_.AtEnd())
            return;
        if (!text_.AtLineStart())
            text_.Fail("there are more values than " + std::to_string(width) + " channels in " +
                       std::to_string(frames_->count) + " frames");
        notes_.Tell("the file has more lines than the " + std::to_string(frames_->count) +
                    " frames that it states; they are left out");
    }

    void AddTake()
    {
        TakeDescription& take = scene_.takes.emplace_back();
        take.name = "Motion";
        if (frames_->count == 0)
            return;
        take.stop = static_cast<double>(frames_->count - 1) * frames_->frame_time;
        for (std::uint32_t i = 0; i < joints_.size(); ++i)
            if (joints_[i].channels > 0)
                take.models.push_back({i, JointMotion(frames_, joints_[i].first_channel, joints_[i].channels,
                                                      scene_.models[i].rest.place)});
    }

    // A figure of a size that nobody has was most likely written in another unit.
    void NoteImplausibleSize()
    {
        std::vector<Vector> places(scene_.models.size());
        Vector least{}, most{};
        for (std::size_t i = 0; i < places.size(); ++i)
        {
            const ModelDescription& model = scene_.models[i];
            places[i] = model.rest.place + (model.parent == kNoModel ? Vector{} : places[model.parent]);
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                least[axis] = i == 0 ? places[i][axis] : std::min(least[axis], places[i][axis]);
                most[axis] = i == 0 ? places[i][axis] : std::max(most[axis], places[i][axis]);
            }
        }
        const Vector size = most - least;
        const double metres = std::max({size[0], size[1], size[2]}) / kCentimetresPerMetre;
        if (metres <= 0.0 || (metres >= kSmallestFigure && metres <= kLargestFigure))
            return;
        char text[128];
        std::snprintf(text, sizeof text,
                      "BVH has no unit; one unit was taken as one centimetre: the figure is %.3g m tall",
                      metres);
        notes_.Tell(text);
    }

    TextScanner text_;
    const ImportOptions& options_;
    ImportNotes& notes_;
    SceneDescription scene_;
    std::vector<Joint> joints_; // of each model
    std::shared_ptr<Frames> frames_ = std::make_shared<Frames>();
};

} // namespace

SceneDescription ReadBvh(std::string_view file, const ImportOptions& options, ImportNotes& notes)
{
    return Reader(file, options, notes).Read();
}

} // namespace mobu_host::bvh
