#include "host/import/collada/scene_takes.h"

#include "host/import/base/parse_error.h"
#include "host/import/collada/channel_target.h"
#include "host/import/collada/key_curve_reader.h"
#include "host/import/collada/motions.h"
#include "host/import/collada/numbers.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace mobu_host::collada
{
namespace
{

constexpr const char* kNamelessAnimation = "animation";

const char* PropertyOf(LensNumber number)
{
    return number == LensNumber::NearPlane  ? "NearPlane"
           : number == LensNumber::FarPlane ? "FarPlane"
                                            : "FieldOfView";
}

// A channel whose target is in the scene.
struct Channel
{
    std::uint32_t node = kNone; // of a transform; kNone: of a camera
    TransformCurve transform;
    Element camera;
    LensCurve lens;

    const std::shared_ptr<const KeyCurve>& Curve() const
    {
        return node == kNone ? lens.curve : transform.curve;
    }

    // All values of a transform before one of them, which the curve of that one then replaces.
    auto Order() const
    {
        return std::tuple(node, transform.transform, transform.value + 1, camera.internal_object(),
                          lens.number);
    }
};

// What a node or camera does in the take that was built last; clips often show the same animation at other times.
template <typename Motion>
struct Built
{
    std::vector<std::uint32_t> channels;
    std::shared_ptr<Motion> motion;
};

class TakeReader
{
public:
    TakeReader(const XmlDocument& document, const DocumentIndex& index, SceneModels& models,
               double centimetres, std::size_t file_size, ImportNotes& notes)
        : document_(document),
          index_(index),
          models_(models),
          centimetres_(centimetres),
          notes_(notes),
          curves_(document, index, file_size),
          work_left_(kFreeWork + file_size / kBytesPerWork)
    {
    }

    std::vector<TakeDescription> Read()
    {
        ResolveChannels();
        std::vector<TakeDescription> takes;
        if (!index_.clips.empty())
            takes = ReadClips();
        else if (!channels_.empty())
            takes = ReadAnimations();
        return takes;
    }

private:
    // What takes may share and repeat: clips could name one animation any number of times.
    static constexpr std::size_t kFreeWork = 200'000;
    static constexpr std::size_t kBytesPerWork = 8;

    using Range = std::pair<std::uint32_t, std::uint32_t>; // of the document's channels

    void ResolveChannels()
    {
        by_document_.reserve(index_.channels.size());
        for (const Element element : index_.channels)
        {
            by_document_.push_back(static_cast<std::uint32_t>(channels_.size()));
            Channel channel;
            if (!Resolve(element, channel))
            {
                static const NoteKind kKind{
                    "animation channel moves no model and no camera of the scene and is left out",
                    "animation channels move no model and no camera of the scene and are left out"};
                notes_.Add(kKind, std::string(Attribute(element, "target")));
            }
            else if (channel.Curve())
            {
                channels_.push_back(std::move(channel));
            }
        }
        by_document_.push_back(static_cast<std::uint32_t>(channels_.size()));
    }

    // False when the target is not in the scene.
    bool Resolve(Element element, Channel& channel)
    {
        const ChannelTarget target = FindTarget(index_, Attribute(element, "target"));
        if (target.node != kNone)
            return ResolveTransform(element, target, channel);
        if (!target.camera || models_.ModelsOf(target.camera).empty())
            return false;
        const std::optional<LensNumber> number = models_.CameraOf(target.camera).Find(target.lens_sid);
        if (!number || *number == LensNumber::Aspect)
            return false;
        channel.camera = target.camera;
        const SamplerCurve& sampler = curves_.Read(element);
        channel.lens = {*number, sampler.curve};
        if (sampler.curve)
            CheckWidth(element, sampler.curve->Width(), 1);
        TellStraightened(sampler, target.camera, target.camera.internal_object());
        return true;
    }

    bool ResolveTransform(Element element, const ChannelTarget& target, Channel& channel)
    {
        if (!models_.IsInScene(target.node))
            return false;
        const TransformKind kind = TransformsOf(target.node)[target.transform].kind;
        const std::optional<std::size_t> value = IndexOfValue(kind, target.member);
        if (!value && !target.member.empty())
            return false;
        const SamplerCurve& sampler = curves_.Read(element);
        channel.node = target.node;
        channel.transform = {target.transform, value ? static_cast<std::uint32_t>(*value) : kAllValues,
                             sampler.curve};
        if (!sampler.curve)
            return true;
        // Some programs leave out that it is the angle of a rotation that they move.
        if (!value && kind == TransformKind::Rotate && sampler.curve->Width() == 1)
            channel.transform.value = static_cast<std::uint32_t>(*IndexOfValue(kind, "ANGLE"));
        CheckWidth(element, sampler.curve->Width(),
                   channel.transform.value == kAllValues ? CountOfValues(kind) : 1);
        const Element node = index_.nodes[target.node].element;
        TellStraightened(sampler, node, node.internal_object());
        return true;
    }

    void CheckWidth(Element channel, std::size_t given, std::size_t needed) const
    {
        if (given != needed)
            document_.Fail(channel, "gives " + std::to_string(given) + " values a key where " +
                                        Quoted(Attribute(channel, "target")) + " has " +
                                        std::to_string(needed));
    }

    void TellStraightened(const SamplerCurve& sampler, Element moved, const void* key)
    {
        static const NoteKind kOther{"model has keys of another interpolation than LINEAR, STEP, BEZIER and "
                                     "HERMITE, read as straight lines",
                                     "models have keys of another interpolation than LINEAR, STEP, BEZIER "
                                     "and HERMITE, read as straight lines"};
        static const NoteKind kTangents{"model has curves without tangents, read as straight lines",
                                        "models have curves without tangents, read as straight lines"};
        if (sampler.has_other_interpolation && told_other_.insert(key).second)
            notes_.Add(kOther, std::string(NameOf(moved)));
        if (sampler.lacks_tangents && told_tangents_.insert(key).second)
            notes_.Add(kTangents, std::string(NameOf(moved)));
    }

    const std::vector<Transform>& TransformsOf(std::uint32_t node)
    {
        const auto [found, is_new] = transforms_.try_emplace(node);
        if (is_new)
            found->second = ReadTransforms(document_, index_.nodes[node].element);
        return found->second;
    }

    std::vector<TakeDescription> ReadAnimations()
    {
        std::vector<std::uint32_t> outermost;
        for (std::uint32_t i = 0; i < index_.animations.size(); ++i)
            if (index_.animations[i].parent == kNone)
                outermost.push_back(i);
        if (!MoveTheSame(outermost))
        {
            TakeDescription take = TakeOf({{0, static_cast<std::uint32_t>(index_.channels.size())}});
            take.name = NameOfAnimation(outermost.front());
            return {std::move(take)};
        }
        std::vector<TakeDescription> takes;
        for (const std::uint32_t animation : outermost)
        {
            TakeDescription take = TakeOf({RangeOf(animation)});
            take.name = NameOfAnimation(animation);
            if (!take.models.empty() || !take.properties.empty())
                takes.push_back(std::move(take));
        }
        return takes;
    }

    std::string NameOfAnimation(std::uint32_t animation) const
    {
        const std::string_view name = Attribute(index_.animations[animation].element, "name");
        return name.empty() ? kNamelessAnimation : std::string(name);
    }

    Range RangeOf(std::uint32_t animation) const
    {
        return {index_.animations[animation].first_channel, index_.animations[animation].end_channel};
    }

    // Whether two of these animations move the same number.
    bool MoveTheSame(const std::vector<std::uint32_t>& animations) const
    {
        std::set<decltype(std::declval<Channel>().Order())> moved_before;
        for (const std::uint32_t animation : animations)
        {
            const auto [first, end] = RangeOf(animation);
            std::vector<decltype(std::declval<Channel>().Order())> moved;
            for (std::uint32_t i = by_document_[first]; i < by_document_[end]; ++i)
            {
                moved.push_back(channels_[i].Order());
                if (moved_before.contains(moved.back()))
                    return true;
            }
            moved_before.insert(moved.begin(), moved.end());
        }
        return false;
    }

    std::vector<TakeDescription> ReadClips()
    {
        std::vector<TakeDescription> takes;
        std::vector<bool> is_shown(index_.channels.size());
        for (const Element clip : index_.clips)
        {
            std::vector<Range> ranges;
            for (const Element instance : clip.children("instance_animation"))
            {
                const std::string_view url = Attribute(instance, "url");
                const std::uint32_t* const animation = index_.animation_ids.Find(IdOf(url));
                static const NoteKind kKind{"animation that a clip names is not in this file",
                                            "animations that clips name are not in this file"};
                if (animation)
                    ranges.push_back(RangeOf(*animation));
                else
                    notes_.Add(kKind, std::string(url));
            }
            TakeDescription& take = takes.emplace_back(TakeOf(ranges));
            for (const auto& [first, end] : ranges)
                std::fill(is_shown.begin() + first, is_shown.begin() + end, true);
            take.name = NameOf(clip);
            take.start = ReadTime(clip, "start", 0.0);
            take.stop = std::max(ReadTime(clip, "end", take.stop), take.start);
        }
        TellHidden(is_shown);
        return takes;
    }

    double ReadTime(Element clip, const char* attribute, double otherwise) const
    {
        const double seconds = ReadNumber(document_, clip, attribute, otherwise);
        if (std::abs(seconds) > kLongestTime)
            document_.Fail(clip, std::string("has its ") + attribute + " more than a million seconds from 0");
        return seconds;
    }

    void TellHidden(const std::vector<bool>& is_shown)
    {
        static const NoteKind kKind{"animation is in no clip and is left out",
                                    "animations are in no clip and are left out"};
        for (const AnimationRecord& animation : index_.animations)
        {
            const auto [first, end] = std::pair(animation.first_channel, animation.end_channel);
            if (animation.parent != kNone || by_document_[first] == by_document_[end])
                continue;
            if (std::find(is_shown.begin() + first, is_shown.begin() + end, true) == is_shown.begin() + end)
                notes_.Add(kKind, std::string(NameOf(animation.element)));
        }
    }

    void Spend(std::size_t work)
    {
        if (work > work_left_)
            throw ParseError("its animation clips repeat more animation than a file of its size may");
        work_left_ -= work;
    }

    TakeDescription TakeOf(const std::vector<Range>& ranges)
    {
        std::vector<std::uint32_t> shown;
        for (const auto& [first, end] : ranges)
        {
            Spend(1 + end - first);
            for (std::uint32_t i = by_document_[first]; i < by_document_[end]; ++i)
                shown.push_back(i);
        }
        TakeDescription take;
        AddSpan(shown, take);
        std::stable_sort(shown.begin(), shown.end(),
                         [this](std::uint32_t a, std::uint32_t b)
                         { return channels_[a].Order() < channels_[b].Order(); });
        for (auto first = shown.begin(); first != shown.end();)
        {
            const Channel& channel = channels_[*first];
            const auto end = std::find_if(first, shown.end(),
                                          [this, &channel](std::uint32_t i) {
                                              return channels_[i].node != channel.node ||
                                                     channels_[i].camera != channel.camera;
                                          });
            if (channel.node != kNone)
                AddNodeMotion({first, end}, take);
            else
                AddCameraMotion({first, end}, take);
            first = end;
        }
        return take;
    }

    // From 0, or the first key before it, to the last key.
    void AddSpan(const std::vector<std::uint32_t>& shown, TakeDescription& take) const
    {
        std::unordered_set<const void*> seen;
        for (const std::uint32_t i : shown)
        {
            const KeyTimes& times = channels_[i].Curve()->times;
            if (!seen.insert(times.get()).second)
                continue;
            take.keys.push_back(times);
            take.start = std::min(take.start, times->front());
            take.stop = std::max(take.stop, times->back());
        }
    }

    void AddNodeMotion(std::vector<std::uint32_t> shown, TakeDescription& take)
    {
        const std::uint32_t node = channels_[shown.front()].node;
        Built<NodeMotion>& built = node_motions_[node];
        if (built.channels != shown)
        {
            const std::vector<Transform>& transforms = TransformsOf(node);
            Spend(4 * shown.size() + transforms.size());
            std::vector<TransformCurve> curves;
            curves.reserve(shown.size());
            for (const std::uint32_t i : shown)
                curves.push_back(channels_[i].transform);
            built = {std::move(shown), std::make_shared<NodeMotion>(transforms, curves, centimetres_)};
        }
        const std::vector<std::uint32_t> models = models_.ModelsOf(node);
        Spend(models.size());
        for (const std::uint32_t model : models)
            take.models.push_back(
                {model, [motion = built.motion](double seconds) { return motion->At(seconds); }});
    }

    void AddCameraMotion(std::vector<std::uint32_t> shown, TakeDescription& take)
    {
        const Element camera = channels_[shown.front()].camera;
        Built<CameraMotion>& built = camera_motions_[camera.internal_object()];
        if (built.channels != shown)
        {
            Spend(4 * shown.size());
            std::vector<LensCurve> curves;
            curves.reserve(shown.size());
            for (const std::uint32_t i : shown)
                curves.push_back(channels_[i].lens);
            built = {std::move(shown),
                     std::make_shared<CameraMotion>(models_.CameraOf(camera), curves, centimetres_)};
        }
        const std::vector<std::uint32_t>& models = models_.ModelsOf(camera);
        Spend(models.size() * built.motion->Moved().size());
        for (const std::uint32_t model : models)
            for (const LensNumber value : built.motion->Moved())
                take.properties.push_back({model, PropertyOf(value), 0,
                                           [motion = built.motion, value](double seconds, int)
                                           { return motion->At(value, seconds); }});
    }

    const XmlDocument& document_;
    const DocumentIndex& index_;
    SceneModels& models_;
    double centimetres_;
    ImportNotes& notes_;
    KeyCurveReader curves_;
    std::size_t work_left_;

    std::vector<Channel> channels_; // those that move something
    std::vector<std::uint32_t>
        by_document_; // of each of the document's channels: the first of `channels_` from it on
    std::unordered_map<std::uint32_t, std::vector<Transform>> transforms_;
    std::unordered_map<std::uint32_t, Built<NodeMotion>> node_motions_;
    std::unordered_map<const void*, Built<CameraMotion>> camera_motions_;
    std::unordered_set<const void*> told_other_, told_tangents_;
};

} // namespace

std::vector<TakeDescription> ReadTakes(const XmlDocument& document, const DocumentIndex& index,
                                       SceneModels& models, double centimetres, std::size_t file_size,
                                       ImportNotes& notes)
{
    return TakeReader(document, index, models, centimetres, file_size, notes).Read();
}

} // namespace mobu_host::collada
