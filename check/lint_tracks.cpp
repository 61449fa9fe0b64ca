#include "check/lint_group.h"

#include "check/track_view.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <utility>

namespace tev2_check
{

using namespace TEV2_LOADER;

namespace
{

// Rotations go through single-precision matrices, which leaves errors around 1e-6; a real mistake is far larger.
constexpr double kUnitTolerance = 0.001;

// A range whose length is no multiple of the step ends with a shorter one, and the accumulated time of a multiple may
// fall short of the end by a rounding error. Only pairs of which next to nothing remains are worth a look.
constexpr float kClosePart = 0.1F;

// A key time that was accumulated, against a range that was computed.
constexpr float kRangeTolerance = 0.001F;

constexpr CheckCode kNonFiniteValue = {"non-finite-value", Severity::Warning, "A number is infinite or NaN."};
constexpr CheckCode kTimesNotAscending = {
    "times-not-ascending", Severity::Warning,
    "A key time is not after the one before it (two equal times at the end of a track are end-keys-close)."};
constexpr CheckCode kEndKeysClose = {
    "end-keys-close", Severity::Note,
    "The last two keys of a track are at one time, or closer than a tenth of the shortest distance between "
    "other keys."};
constexpr CheckCode kKeyOutsideRange = {"key-outside-range", Severity::Note,
                                        "A key is outside the time range by more than a millisecond."};
constexpr CheckCode kValueCountDiffers = {"value-count-differs", Severity::Warning,
                                          "A track has more or fewer values than times."};
constexpr CheckCode kConstantWithTimes = {
    "constant-with-times", Severity::Note,
    "A track has one value, which makes it a constant, but not one time."};
constexpr CheckCode kTrackWithoutKeys = {"track-without-keys", Severity::Warning, "A track has no values."};
constexpr CheckCode kCursorOutside = {
    "cursor-outside", Severity::Warning,
    "The stored playback cursor is not at a key that opens a segment, or its fraction is not from 0 to 1."};
constexpr CheckCode kQuaternionNotUnit = {
    "quaternion-not-unit", Severity::Warning,
    "The length of a rotation differs from 1 by more than 0.001, as that of a mirrored model does."};
constexpr CheckCode kQuaternionFlip = {
    "quaternion-flip", Severity::Warning,
    "Two neighbouring rotations have a negative dot product: interpolation takes the long way round."};
constexpr CheckCode kNodeTrackMissing = {"node-track-missing", Severity::Warning,
                                         "A node has no translation or no rotation track."};
constexpr CheckCode kParentNotBeforeChild = {
    "parent-not-before-child", Severity::Warning,
    "A node's parent is the node itself or comes after it, so evaluation uses a stale parent."};
constexpr CheckCode kDuplicateNodeName = {"duplicate-node-name", Severity::Note,
                                          "Several nodes have the same name."};
constexpr CheckCode kSwitcherCameraOutside = {
    "switcher-camera-outside", Severity::Warning,
    "The camera switcher names a camera beyond the cameras, or a negative one other than -1."};
constexpr CheckCode kTrackCodes[] = {
    kNonFiniteValue,    kTimesNotAscending,    kEndKeysClose,      kKeyOutsideRange,      kValueCountDiffers,
    kConstantWithTimes, kTrackWithoutKeys,     kCursorOutside,     kQuaternionNotUnit,    kQuaternionFlip,
    kNodeTrackMissing,  kParentNotBeforeChild, kDuplicateNodeName, kSwitcherCameraOutside};

std::string At(std::size_t key)
{
    return "key " + std::to_string(key);
}

class TrackGroup : public LintGroup
{
public:
    TrackGroup(const LoadedFile& file, Findings& findings)
        : file_(file), scene_(*file.scene), findings_(findings)
    {
        CheckNodeNames();
    }

    void Number(const TEV2_FIELD& field, double number) override
    {
        if (!std::isfinite(number))
            NoteNonFinite(field, static_cast<float>(number));
        if (field.chunkId == kMatrixHierarchyChunk && std::string_view(field.label) == "parentIndex")
            CheckParent(field);
    }

    void Track(const TEV2_FIELD& field, const TEV2_ANIMATABLE* track) override
    {
        if (field.chunkId == kMatrixHierarchyChunk && std::string_view(field.label) == "translation")
            CheckNodeTracks(field);
        if (track == nullptr)
            return;
        const TrackView view(*track);
        CheckCounts(field, view);
        CheckCursor(field, *track);
        CheckTimes(field, view);
        if (view.IsInteger())
        {
            if (field.chunkId == kCameraManChunk)
                CheckSwitcher(field, view);
            return;
        }
        CheckFinite(field, view);
        if (view.IsQuaternion())
            CheckRotations(field, view);
    }

    void Finish() override { CheckEndPairs(); }

private:
    /// Once for each value, of however many numbers it is.
    void NoteNonFinite(const TEV2_FIELD& field, float number)
    {
        const std::uint64_t value = field.offset - field.component * sizeof number;
        if (std::exchange(non_finite_value_, value) == value)
            return;
        findings_.AddOnce(kNonFiniteValue, field, field.record + '.' + field.label,
                          [&]
                          {
                              return (field.item == TEV2_FIELD::kNoIndex
                                          ? "is "
                                          : "value " + CountText(field.item) + " has ") +
                                     FloatText(number);
                          });
    }

    void CheckParent(const TEV2_FIELD& field)
    {
        const auto& nodes = scene_.matrixHierarchy.nodes;
        const std::int32_t index = nodes[field.index].parentIndex;
        const auto parent = static_cast<std::size_t>(index);
        if (index >= 0 && parent >= field.index && parent < nodes.size())
        {
            findings_.AddForRecord(
                kParentNotBeforeChild, field,
                "node " + std::to_string(field.index) + " has the parent " + std::to_string(parent) +
                    (parent == field.index ? ", itself" : ", " + QuotedName(nodes[parent].name)));
        }
    }

    void CheckNodeTracks(const TEV2_FIELD& field)
    {
        const TEV2_MATRIX_NODE& node = scene_.matrixHierarchy.nodes[field.index];
        if (node.translation == nullptr || node.rotation == nullptr)
        {
            findings_.AddForRecord(kNodeTrackMissing, field,
                                   node.translation != nullptr ? "no rotation"
                                   : node.rotation != nullptr  ? "no translation"
                                                               : "neither translation nor rotation");
        }
    }

    void CheckNodeNames()
    {
        const TEV2_CHUNK_SPAN* chunk = LastChunk(file_, kMatrixHierarchyChunk);
        if (chunk == nullptr)
            return;
        std::map<std::u16string, std::vector<std::size_t>> nodes_by_name;
        const auto& nodes = scene_.matrixHierarchy.nodes;
        for (std::size_t i = 0; i < nodes.size(); ++i)
            nodes_by_name[nodes[i].name.Text()].push_back(i);
        for (const auto& [name, indices] : nodes_by_name)
        {
            if (indices.size() > 1)
            {
                findings_.AddForChunk(kDuplicateNodeName, *chunk, chunk->offset, "matrixHierarchy",
                                      CountText(indices.size()) + " nodes are called " +
                                          QuotedName(TEV2_WIDE_STRING(name)) + ", first " +
                                          std::to_string(indices[0]) + " and " + std::to_string(indices[1]));
            }
        }
    }

    void CheckCounts(const TEV2_FIELD& field, const TrackView& view)
    {
        const std::string counts =
            CountOf(view.TimeCount(), "time", "times") + ", " + CountOf(view.ValueCount(), "value", "values");
        if (view.ValueCount() == 0)
            findings_.Add(kTrackWithoutKeys, field, field.offset, counts);
        else if (view.ValueCount() == 1 && view.TimeCount() != 1)
            findings_.Add(kConstantWithTimes, field, field.offset, counts);
        else if (view.ValueCount() != view.TimeCount())
            findings_.Add(kValueCountDiffers, field, field.offset, counts);
    }

    void CheckCursor(const TEV2_FIELD& field, const TEV2_ANIMATABLE& track)
    {
        const std::size_t last_segment = track.m_times.size() < 2 ? 0 : track.m_times.size() - 2;
        if (track.m_current_key > last_segment)
        {
            findings_.Add(kCursorOutside, field, field.offset + 8,
                          "cursor at " + At(track.m_current_key) + " of " +
                              CountOf(track.m_times.size(), "key", "keys"));
        }
        if (!(track.m_fraction >= 0.0F && track.m_fraction <= 1.0F))
            findings_.Add(kCursorOutside, field, field.offset + 12,
                          "fraction " + FloatText(track.m_fraction));
    }

    void CheckTimes(const TEV2_FIELD& field, const TrackView& view)
    {
        const std::size_t count = view.TimeCount();
        const auto& range = scene_.environment.timeRange;
        bool finite = true;
        bool ascending = true;
        bool inside = LastChunk(file_, kEnvironmentChunk) != nullptr && range.minimum <= range.maximum;
        for (std::size_t i = 0; i < count; ++i)
        {
            const float time = view.Time(i);
            if (!std::isfinite(time) && finite)
            {
                finite = false;
                findings_.Add(kNonFiniteValue, field, field.offset + view.TimeOffset(i),
                              "time of " + At(i) + " is " + FloatText(time));
            }
            const bool equal_at_end = i + 1 == count && i > 0 && time == view.Time(i - 1);
            if (i > 0 && ascending && time <= view.Time(i - 1) && !equal_at_end)
            {
                ascending = false;
                findings_.Add(kTimesNotAscending, field, field.offset + view.TimeOffset(i),
                              At(i) + " at " + FloatText(time) + " s follows one at " +
                                  FloatText(view.Time(i - 1)) + " s");
            }
            if (inside && (time < range.minimum - kRangeTolerance || time > range.maximum + kRangeTolerance))
            {
                inside = false;
                findings_.Add(kKeyOutsideRange, field, field.offset + view.TimeOffset(i),
                              At(i) + " at " + FloatText(time) + " s, range " + FloatText(range.minimum) +
                                  " to " + FloatText(range.maximum) + " s");
            }
        }
        if (finite && ascending && count >= 2)
            NoteEndPair(field, view);
    }

    /// All tracks of a sampling end alike: one entry for all that share the last two times.
    void NoteEndPair(const TEV2_FIELD& field, const TrackView& view)
    {
        const std::size_t count = view.TimeCount();
        for (std::size_t i = 1; i + 1 < count; ++i)
            shortest_step_ = std::min(shortest_step_, view.Time(i) - view.Time(i - 1));
        const auto times = std::make_pair(view.Time(count - 2), view.Time(count - 1));
        const EndPair first{field, field.offset + view.TimeOffset(count - 1), 0};
        ++end_pairs_.try_emplace(times, first).first->second.tracks;
    }

    void CheckEndPairs()
    {
        for (const auto& [times, pair] : end_pairs_)
        {
            const float distance = times.second - times.first;
            const bool close = std::isfinite(shortest_step_) && distance < kClosePart * shortest_step_;
            if (distance == 0.0F || close)
            {
                findings_.Add(kEndKeysClose, pair.field, pair.offset,
                              "the last two keys are " + FloatText(distance) + " s apart" +
                                  (close ? ", other keys at least " + FloatText(shortest_step_) + " s" : "") +
                                  (pair.tracks > 1
                                       ? "; so in " + CountOf(pair.tracks - 1, "more track", "more tracks")
                                       : ""));
            }
        }
    }

    void CheckFinite(const TEV2_FIELD& field, const TrackView& view)
    {
        std::size_t found = 0;
        std::size_t first = 0;
        for (std::size_t i = 0; i < view.ValueCount(); ++i)
        {
            const auto value = view.Value(i);
            if (!std::all_of(value.begin(), value.end(),
                             [](float component) { return std::isfinite(component); }))
            {
                first = found == 0 ? i : first;
                ++found;
            }
        }
        if (found > 0)
        {
            findings_.Add(kNonFiniteValue, field, field.offset + view.ValueOffset(first),
                          "value of " + At(first) +
                              (found > 1 ? " and " + CountText(found - 1) + " more" : ""));
        }
    }

    void CheckRotations(const TEV2_FIELD& field, const TrackView& view)
    {
        bool unit = true;
        bool continuous = true;
        for (std::size_t i = 0; i < view.ValueCount() && (unit || continuous); ++i)
        {
            const auto value = view.Value(i);
            const double length = std::sqrt(Dot(value, value));
            if (unit && std::isfinite(length) && std::abs(length - 1.0) > kUnitTolerance)
            {
                unit = false;
                findings_.Add(kQuaternionNotUnit, field, field.offset + view.ValueOffset(i),
                              At(i) + " has the length " + FloatText(static_cast<float>(length)));
            }
            const double dot = i > 0 ? Dot(view.Value(i - 1), value) : 1.0;
            if (continuous && dot < 0.0)
            {
                continuous = false;
                findings_.Add(kQuaternionFlip, field, field.offset + view.ValueOffset(i),
                              At(i - 1) + " and the next have the dot product " +
                                  FloatText(static_cast<float>(dot)));
            }
        }
    }

    /// In double precision, where no product of finite numbers of a file is infinite.
    static double Dot(const std::array<float, TrackView::kMostComponents>& a,
                      const std::array<float, TrackView::kMostComponents>& b)
    {
        double dot = 0.0;
        for (std::size_t i = 0; i < 4; ++i)
            dot += static_cast<double>(a[i]) * static_cast<double>(b[i]);
        return dot;
    }

    void CheckSwitcher(const TEV2_FIELD& field, const TrackView& view)
    {
        const auto cameras = static_cast<std::int64_t>(scene_.cameras.size());
        for (std::size_t i = 0; i < view.ValueCount(); ++i)
        {
            if (view.Integer(i) < -1 || view.Integer(i) >= cameras)
            {
                findings_.Add(kSwitcherCameraOutside, field, field.offset + view.ValueOffset(i),
                              At(i) + " names camera " + std::to_string(view.Integer(i)) +
                                  ", but there are " + CountOf(scene_.cameras.size(), "camera", "cameras"));
                return;
            }
        }
    }

    /// The first track that ends with a pair of times, the offset of its last time, and how many end so.
    struct EndPair
    {
        TEV2_FIELD field;
        std::uint64_t offset;
        std::size_t tracks;
    };

    const LoadedFile& file_;
    const TEV2& scene_;
    Findings& findings_;
    std::map<std::pair<float, float>, EndPair> end_pairs_;
    std::uint64_t non_finite_value_ = 0;                           ///< the offset of the last one
    float shortest_step_ = std::numeric_limits<float>::infinity(); // between keys that are not the last two
};

} // namespace

LintGroupRow TrackLint()
{
    return {kTrackCodes,
            [](const LoadedFile& file, const CheckOptions&, Findings& findings) -> std::unique_ptr<LintGroup>
            { return std::make_unique<TrackGroup>(file, findings); }};
}

} // namespace tev2_check
