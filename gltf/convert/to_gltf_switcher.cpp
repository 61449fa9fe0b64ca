#include "gltf/convert/to_gltf_switcher.h"

#include "gltf/convert/rotation_keys.h"
#include "gltf/convert/to_gltf_tracks.h"
#include "gltf/convert/world_poses.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

namespace tev2_gltf
{

using namespace TEV2_LOADER;

namespace
{

/// Nodes that may be evaluated at keys for one animation. Real scenes need a few thousands.
constexpr std::size_t kMostWork = 2'000'000;

/// The keys of a node that follows cameras.
class Follower
{
public:
    Follower(const Frame& frame, double shift) : frame_(frame), shift_(shift) {}

    /// Appends the pose of a camera at a time of the animation, unless a key at or after it is there.
    void Append(WorldPoses& poses, float time)
    {
        if (times_.empty() || time > times_.back())
            Append(time, PoseAt(poses, time));
    }

    /// The same, with keys in between where a straight line would leave the camera's way.
    void FollowTo(WorldPoses& poses, float time)
    {
        if (!(time > times_.back()))
            return;
        const Key end{time, PoseAt(poses, time)};
        Refine(poses, {times_.back(), last_}, end, kMostHalvings);
        Append(end.time, end.pose);
    }

    void AddTo(GltfAnimation& animation, std::size_t node, const char* interpolation)
    {
        animation.AddChannel(node, "translation", times_, std::move(places_), interpolation);
        animation.AddChannel(node, "rotation", times_, std::move(turns_), interpolation);
    }

    const std::vector<float>& Places() const { return places_; }
    const std::vector<float>& Turns() const { return turns_; }

private:
    struct Key
    {
        float time;
        WorldPose pose; // in the axes of glTF
    };

    static constexpr int kMostHalvings = 5;

    WorldPose PoseAt(WorldPoses& poses, float time) const
    {
        const WorldPose pose = poses.At(static_cast<float>(static_cast<double>(time) - shift_));
        return {ToGltfTranslation(pose.translation, frame_),
                UnitRotation(ToGltfRotation(pose.rotation, frame_))};
    }

    void Append(float time, WorldPose pose)
    {
        if (!turns_.empty() && Dot(last_.rotation, pose.rotation) < 0.0f)
            pose.rotation = -pose.rotation;
        last_ = pose;
        times_.push_back(time);
        places_.insert(places_.end(), {pose.translation.x, pose.translation.y, pose.translation.z});
        turns_.insert(turns_.end(), {pose.rotation.x, pose.rotation.y, pose.rotation.z, pose.rotation.w});
    }

    /// Whether a pose is where players are half way between two others.
    static bool IsHalfWay(const WorldPose& from, const WorldPose& pose, const WorldPose& to)
    {
        constexpr float kTolerance = 1e-4f; // metres
        constexpr float kTurn = 1e-7f;      // of the dot product: 0.05 degrees
        const TEV2_VECTOR_3 off = pose.translation - (from.translation + to.translation) * 0.5f;
        const TEV2_QUATERNION closing = Dot(from.rotation, to.rotation) < 0.0f ? -to.rotation : to.rotation;
        const TEV2_QUATERNION middle = UnitRotation((from.rotation + closing) * 0.5f);
        return std::max({std::abs(off.x), std::abs(off.y), std::abs(off.z)}) <= kTolerance &&
               1.0f - std::abs(Dot(middle, pose.rotation)) <= kTurn;
    }

    void Refine(WorldPoses& poses, const Key& from, const Key& to, int halvings)
    {
        const float time = from.time + (to.time - from.time) * 0.5f;
        if (halvings == 0 || !(time > from.time) || !(time < to.time))
            return;
        const Key middle{time, PoseAt(poses, time)};
        if (IsHalfWay(from.pose, middle.pose, to.pose))
            return;
        Refine(poses, from, middle, halvings - 1);
        Append(middle.time, middle.pose);
        Refine(poses, middle, to, halvings - 1);
    }

    Frame frame_;
    double shift_;
    std::vector<float> times_;
    std::vector<float> places_;
    std::vector<float> turns_;
    WorldPose last_;
};

} // namespace

GltfSwitcher::GltfSwitcher(ToGltfContext& context, GltfNodes& nodes, const CameraIndices& cameras)
    : context_(context), nodes_(nodes), cameras_(cameras)
{
}

bool GltfSwitcher::IsCamera(std::int32_t camera) const
{
    return camera >= 0 && cameras_.contains(static_cast<std::size_t>(camera));
}

std::vector<GltfSwitcher::Cut> GltfSwitcher::CutsOf(std::size_t source, double shift)
{
    const auto& track = context_.sources[source].scene.cameraMan.cameraIndex;
    std::vector<Cut> cuts;
    if (!track)
        return cuts;
    if (context_.options.at)
        return {{0.0f, ValueAt(track, *context_.options.at, -1)}};
    const Keys<std::int32_t> keys = CleanKeys(track, -1, shift, "cameraMan.cameraIndex", context_.report);
    for (std::size_t i = 0; i < keys.times.size(); ++i)
    {
        const std::int32_t camera = IsCamera(keys.values[i]) ? keys.values[i] : -1;
        if (cuts.empty() || cuts.back().camera != camera)
            cuts.push_back({keys.times[i], camera});
    }
    return cuts;
}

Json GltfSwitcher::Describe(std::size_t source, const std::vector<Cut>& cuts) const
{
    Json times = Json::array();
    Json names = Json::array();
    for (const Cut& cut : cuts)
    {
        times.push_back(gltf::FloatNumber(cut.time));
        names.push_back(cut.camera < 0
                            ? std::string()
                            : Name(*context_.Scene().cameras[static_cast<std::size_t>(cut.camera)]));
    }
    return {{"animation", context_.sources[source].animation_name}, {"times", times}, {"cameras", names}};
}

/// Which camera the node follows from when on: where none is active it stays with the one before.
std::vector<GltfSwitcher::Cut> GltfSwitcher::ShotsOf(std::size_t source) const
{
    std::vector<Cut> shots;
    for (const Cut& cut : cuts_[source])
        if (cut.camera >= 0 && (shots.empty() || shots.back().camera != cut.camera))
            shots.push_back(cut);
    return shots;
}

void GltfSwitcher::Write(const std::vector<double>& shift)
{
    Json entries = Json::array();
    for (std::size_t i = 0; i < context_.sources.size(); ++i)
    {
        cuts_.push_back(CutsOf(i, shift[i]));
        if (!cuts_[i].empty())
            entries.push_back(Describe(i, cuts_[i]));
    }
    if (entries.empty())
        return;
    extras_[std::string(kSwitcherExtra)] = std::move(entries);
    for (std::size_t i = 0; i < cuts_.size() && !node_; ++i)
    {
        const std::vector<Cut> shots = ShotsOf(i);
        if (shots.empty())
            continue;
        const float start =
            context_.options.at.value_or(context_.sources[i].scene.environment.timeRange.minimum);
        std::int32_t active = shots.front().camera;
        for (const Cut& shot : shots)
            if (shot.time <= Later(start, shift[i]))
                active = shot.camera;
        const CameraPlace& place = cameras_.at(static_cast<std::size_t>(active));
        node_ = nodes_.AddVoid(std::string(kSwitcherNode));
        Follower rest({nodes_.WorldFrame(i, Exchange::NegateZ)}, 0.0);
        WorldPoses poses(context_, nodes_, i, place.node);
        rest.Append(poses, std::isfinite(start) ? start : 0.0f);
        Json& members = nodes_.Members(*node_);
        members["translation"] = gltf::FloatNumbers(rest.Places());
        members["rotation"] = gltf::FloatNumbers(rest.Turns());
        // Of its own: viewers such as older versions of three.js show a camera that two nodes share at one of them.
        Json lens = context_.out.Root()["cameras"][place.camera];
        lens["name"] = kSwitcherNode;
        members["camera"] = context_.out.Append("cameras", std::move(lens));
        members["extras"][std::string(kSwitcherExtra)] = true;
    }
}

void GltfSwitcher::Animate(GltfAnimation& animation)
{
    const std::vector<Cut> shots = ShotsOf(animation.Source());
    if (!node_ || shots.empty())
        return;
    // Made for each shot again: those of all cameras below a long chain of nodes would fill the memory.
    const auto poses_of = [&](const Cut& shot)
    {
        return WorldPoses(context_, nodes_, animation.Source(),
                          cameras_.at(static_cast<std::size_t>(shot.camera)).node);
    };
    std::set<std::int32_t> met;
    bool moves = false;
    std::size_t work = 0;
    for (const Cut& shot : shots)
    {
        const WorldPoses camera = poses_of(shot);
        moves |= camera.Moves();
        const std::size_t poses = met.insert(shot.camera).second ? camera.Times().size() + 2 : 2;
        work += poses * (camera.NodeCount() + 1) + camera.Times().size();
        if (work > kMostWork)
            return context_.report.Add(Code::AnimationLost, std::string(kSwitcherNode),
                                       "the cameras have too many keys for one node to follow them");
    }
    Follower follower(nodes_.WorldFrame(animation.Source(), Exchange::NegateZ), animation.Shift());
    for (std::size_t i = 0; i < shots.size(); ++i)
    {
        constexpr float kForever = std::numeric_limits<float>::infinity();
        WorldPoses camera = poses_of(shots[i]);
        const float begin = i == 0 ? 0.0f : shots[i].time;
        const float end = i + 1 < shots.size() ? shots[i + 1].time : kForever;
        follower.Append(camera, begin);
        if (!moves)
            continue;
        const std::vector<float>& times = camera.Times();
        const auto source_begin = static_cast<float>(static_cast<double>(begin) - animation.Shift());
        for (auto time = std::upper_bound(times.begin(), times.end(), source_begin); time != times.end();
             ++time)
        {
            if (!(Later(*time, animation.Shift()) < end))
                break;
            follower.FollowTo(camera, Later(*time, animation.Shift()));
        }
        if (end < kForever) // the camera before the cut, up to it
            follower.FollowTo(camera, std::nextafter(end, 0.0f));
    }
    follower.AddTo(animation, *node_, moves ? "LINEAR" : "STEP");
}

} // namespace tev2_gltf
