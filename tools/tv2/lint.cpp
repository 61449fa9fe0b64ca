#include "tools/tv2/lint.h"

#include "tev2_loader/walk.h"
#include "tools/tv2/text.h"
#include "tools/tv2/track_view.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <map>

namespace tv2
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

std::string QuotedName(const TEV2_WIDE_STRING& name)
{
    return Quoted(ReadableText(name.Text()));
}

std::string At(std::size_t key)
{
    return "key " + std::to_string(key);
}

class Lint : public TEV2_FIELD_VISITOR
{
public:
    Lint(const LoadedFile& file, std::vector<Finding>& findings)
        : file_(file), scene_(*file.scene), findings_(findings)
    {
    }

    void Run()
    {
        CheckChunks();
        CheckArrayLengths();
        CheckNodeNames();
        WalkScene(scene_, file_.image.data(), file_.report, *this);
        CheckEndPairs();
    }

    void Number(const TEV2_FIELD& field, double /*number*/) override
    {
        const std::string_view label = field.label;
        if (field.chunkId == kMatrixHierarchyChunk && label == "parentIndex")
            CheckParent(field);
        else if (field.chunkId == kCameraChunk && label == "value")
            CheckCameraNode(field);
        else if (field.chunkId == kCameraChunk && label == "inverseAspect")
            CheckLens(field);
        else if (field.chunkId == kEnvironmentChunk && label == "timeRange" && field.component == 0)
            CheckTimeRange(field);
    }

    void Text(const TEV2_FIELD& field, const TEV2_WIDE_STRING& text) override
    {
        if (text.Text().size() == kMostStringUnits)
        {
            Add("text-cut", field, field.offset,
                CountText(kMostStringUnits) + " units, the most that a file can hold");
        }
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

private:
    /// About a field.
    void Add(const char* code, const TEV2_FIELD& field, std::uint64_t offset, std::string message)
    {
        findings_.push_back({code, FindCheckCode(code).severity, offset, field.chunkId, field.chunkOffset,
                             field.Path(), std::move(message)});
    }

    /// About the record that a field is of.
    void AddForRecord(const char* code, const TEV2_FIELD& field, std::string message)
    {
        findings_.push_back({code, FindCheckCode(code).severity, field.offset, field.chunkId,
                             field.chunkOffset, field.record, std::move(message)});
    }

    void AddForChunk(const char* code, const TEV2_CHUNK_SPAN& chunk, std::uint64_t offset, const char* path,
                     std::string message)
    {
        findings_.push_back(
            {code, FindCheckCode(code).severity, offset, chunk.id, chunk.offset, path, std::move(message)});
    }

    void CheckParent(const TEV2_FIELD& field)
    {
        const auto& nodes = scene_.matrixHierarchy.nodes;
        const std::int32_t index = nodes[field.index].parentIndex;
        const auto parent = static_cast<std::size_t>(index);
        if (index >= 0 && parent >= field.index && parent < nodes.size())
        {
            AddForRecord("parent-not-before-child", field,
                         "node " + std::to_string(field.index) + " has the parent " + std::to_string(parent) +
                             (parent == field.index ? ", itself" : ", " + QuotedName(nodes[parent].name)));
        }
    }

    void CheckNodeTracks(const TEV2_FIELD& field)
    {
        const TEV2_MATRIX_NODE& node = scene_.matrixHierarchy.nodes[field.index];
        if (node.translation == nullptr || node.rotation == nullptr)
        {
            AddForRecord("node-track-missing", field,
                         node.translation != nullptr ? "no rotation"
                         : node.rotation != nullptr  ? "no translation"
                                                     : "neither translation nor rotation");
        }
    }

    void CheckCameraNode(const TEV2_FIELD& field)
    {
        const std::uint32_t node = scene_.cameras[field.index]->value;
        if (node >= scene_.matrixHierarchy.nodes.size())
        {
            AddForRecord("camera-node-outside", field,
                         "node index " + std::to_string(node) + ", but there are " +
                             CountOf(scene_.matrixHierarchy.nodes.size(), "node", "nodes"));
        }
    }

    void CheckLens(const TEV2_FIELD& field)
    {
        const float inverse_aspect = scene_.cameras[field.index]->inverseAspect;
        if (!std::isfinite(inverse_aspect))
            AddForRecord("non-finite-value", field, "inverseAspect is " + FloatText(inverse_aspect));
    }

    void CheckChunks()
    {
        const auto& chunks = file_.report.chunks;
        if (!chunks.empty() && chunks[0].id != kInformationChunk)
        {
            AddForChunk("information-not-first", chunks[0], chunks[0].offset, "",
                        "the first chunk is " + ChunkTitle(chunks[0].id));
        }
        for (const std::uint32_t id :
             {kInformationChunk, kArrayLengthsChunk, kEnvironmentChunk, kGlobalLightTintChunk,
              kAmbientLightChunk, kMatrixHierarchyChunk, kCameraManChunk})
        {
            bool seen = false;
            for (const TEV2_CHUNK_SPAN& chunk : chunks)
            {
                if (chunk.id == id && seen)
                    AddForChunk("chunk-repeated", chunk, chunk.offset, "", "another chunk " + ChunkTitle(id));
                seen = seen || chunk.id == id;
            }
            if (!seen && id != kGlobalLightTintChunk && id != kAmbientLightChunk)
            {
                findings_.push_back({"chunk-missing", FindCheckCode("chunk-missing").severity,
                                     file_.image.size(), std::nullopt, 0, "", "no chunk " + ChunkTitle(id)});
            }
        }
    }

    void CheckArrayLengths()
    {
        const auto announced = AnnouncedLengths(file_);
        if (!announced)
            return;
        const TEV2_CHUNK_SPAN& chunk = *LastChunk(file_, kArrayLengthsChunk);
        const TEV2_ARRAY_LENGTH_HELPER present(scene_);
        for (std::size_t i = 0; i < TEV2_ARRAY_LENGTH_HELPER::kCounts; ++i)
        {
            if (announced->counts[i] != present.counts[i])
            {
                AddForChunk("array-lengths-differ", chunk,
                            chunk.offset + kChunkHeader + sizeof(std::uint32_t) * (i + 1), "arrayLengths",
                            "number " + std::to_string(i + 1) + " announces " +
                                CountText(announced->counts[i]) + ", there are " +
                                CountText(present.counts[i]));
            }
        }
    }

    void CheckTimeRange(const TEV2_FIELD& field)
    {
        const auto& range = scene_.environment.timeRange;
        const std::string text = FloatText(range.minimum) + " to " + FloatText(range.maximum);
        if (!std::isfinite(range.minimum) || !std::isfinite(range.maximum))
            Add("non-finite-value", field, field.offset, text);
        else if (range.maximum < range.minimum)
            Add("time-range-reversed", field, field.offset, text);
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
                AddForChunk("duplicate-node-name", *chunk, chunk->offset, "matrixHierarchy",
                            CountText(indices.size()) + " nodes are called " +
                                QuotedName(TEV2_WIDE_STRING(name)) + ", first " + std::to_string(indices[0]) +
                                " and " + std::to_string(indices[1]));
            }
        }
    }

    void CheckCounts(const TEV2_FIELD& field, const TrackView& view)
    {
        const std::string counts =
            CountOf(view.TimeCount(), "time", "times") + ", " + CountOf(view.ValueCount(), "value", "values");
        if (view.ValueCount() == 0)
            Add("track-without-keys", field, field.offset, counts);
        else if (view.ValueCount() == 1 && view.TimeCount() != 1)
            Add("constant-with-times", field, field.offset, counts);
        else if (view.ValueCount() != view.TimeCount())
            Add("value-count-differs", field, field.offset, counts);
    }

    void CheckCursor(const TEV2_FIELD& field, const TEV2_ANIMATABLE& track)
    {
        const std::size_t last_segment = track.m_times.size() < 2 ? 0 : track.m_times.size() - 2;
        if (track.m_current_key > last_segment)
        {
            Add("cursor-outside", field, field.offset + 8,
                "cursor at " + At(track.m_current_key) + " of " +
                    CountOf(track.m_times.size(), "key", "keys"));
        }
        if (!(track.m_fraction >= 0.0F && track.m_fraction <= 1.0F))
            Add("cursor-outside", field, field.offset + 12, "fraction " + FloatText(track.m_fraction));
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
                Add("non-finite-value", field, field.offset + view.TimeOffset(i),
                    "time of " + At(i) + " is " + FloatText(time));
            }
            const bool equal_at_end = i + 1 == count && i > 0 && time == view.Time(i - 1);
            if (i > 0 && ascending && time <= view.Time(i - 1) && !equal_at_end)
            {
                ascending = false;
                Add("times-not-ascending", field, field.offset + view.TimeOffset(i),
                    At(i) + " at " + FloatText(time) + " s follows one at " + FloatText(view.Time(i - 1)) +
                        " s");
            }
            if (inside && (time < range.minimum - kRangeTolerance || time > range.maximum + kRangeTolerance))
            {
                inside = false;
                Add("key-outside-range", field, field.offset + view.TimeOffset(i),
                    At(i) + " at " + FloatText(time) + " s, range " + FloatText(range.minimum) + " to " +
                        FloatText(range.maximum) + " s");
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
                Add("end-keys-close", pair.field, pair.offset,
                    "the last two keys are " + FloatText(distance) + " s apart" +
                        (close ? ", other keys at least " + FloatText(shortest_step_) + " s" : "") +
                        (pair.tracks > 1 ? "; so in " + CountOf(pair.tracks - 1, "more track", "more tracks")
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
            Add("non-finite-value", field, field.offset + view.ValueOffset(first),
                "value of " + At(first) + (found > 1 ? " and " + CountText(found - 1) + " more" : ""));
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
                Add("quaternion-not-unit", field, field.offset + view.ValueOffset(i),
                    At(i) + " has the length " + FloatText(static_cast<float>(length)));
            }
            const double dot = i > 0 ? Dot(view.Value(i - 1), value) : 1.0;
            if (continuous && dot < 0.0)
            {
                continuous = false;
                Add("quaternion-flip", field, field.offset + view.ValueOffset(i),
                    At(i - 1) + " and the next have the dot product " + FloatText(static_cast<float>(dot)));
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
                Add("switcher-camera-outside", field, field.offset + view.ValueOffset(i),
                    At(i) + " names camera " + std::to_string(view.Integer(i)) + ", but there are " +
                        CountOf(scene_.cameras.size(), "camera", "cameras"));
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
    std::vector<Finding>& findings_;
    std::map<std::pair<float, float>, EndPair> end_pairs_;
    float shortest_step_ = std::numeric_limits<float>::infinity(); // between keys that are not the last two
};

Finding FromLoader(const TEV2_LOAD_FINDING& loader)
{
    Finding finding;
    finding.code = CodeName(loader.code);
    finding.severity = loader.severity == TEV2_LOAD_SEVERITY::Error ? Severity::Error : Severity::Warning;
    finding.offset = loader.offset;
    if (loader.chunkId != TEV2_LOAD_FINDING::kNoChunk)
    {
        finding.chunk_id = loader.chunkId;
        finding.chunk_offset = loader.chunkOffset;
    }
    finding.path = loader.path;
    finding.message = "expected " + loader.expected + ", found " + loader.found;
    return finding;
}

/// The index that follows `list` at the front of `path`; none when the path begins otherwise.
std::optional<std::size_t> IndexBehind(std::string_view list, std::string_view path)
{
    std::size_t index = 0;
    if (!path.starts_with(list) ||
        std::from_chars(path.data() + list.size(), path.data() + path.size(), index).ec != std::errc())
        return std::nullopt;
    return index;
}

/// The name of the node or camera that a record path leads to or into; empty for other paths.
std::string NameAt(const TEV2& scene, std::string_view path)
{
    const auto& nodes = scene.matrixHierarchy.nodes;
    if (const auto node = IndexBehind("matrixHierarchy.nodes[", path); node && *node < nodes.size())
        return ReadableText(nodes[*node].name.Text());
    if (const auto camera = IndexBehind("cameras[", path); camera && *camera < scene.cameras.size())
        return ReadableText(scene.cameras[*camera]->name.Text());
    return {};
}

} // namespace

std::vector<Finding> Examine(const LoadedFile& file)
{
    std::vector<Finding> findings;
    for (const TEV2_LOAD_FINDING& loader : file.report.findings)
        findings.push_back(FromLoader(loader));
    if (file.loaded)
        Lint(file, findings).Run();
    for (Finding& finding : findings)
        finding.name = NameAt(*file.scene, finding.path);
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& left, const Finding& right) { return left.offset < right.offset; });
    return findings;
}

} // namespace tv2
