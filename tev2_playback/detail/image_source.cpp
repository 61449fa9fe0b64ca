#include "tev2_playback/detail/image_source.h"

#include "tev2_loader/archive/load.h"
#include "tev2_loader/detail/scene_reader.h"
#include "tev2_loader/tracks/track_view.h"
#include "tev2_playback/detail/scene_source.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>
#include <vector>

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

namespace
{

using TextView = TEV2_VIEW<char16_t>;

struct TextsView
{
    using Viewed = TEV2_NAMED_STRING_ARRAY;

    TextView name;
    std::vector<TextView> strings;
};

template <typename Family>
struct NamedTrackView
{
    using Viewed = TEV2_NAMED_ANIMATABLE<Family>;

    TextView name;
    TEV2_TRACK_VIEW<Family> track;
};

struct PropertiesView
{
    using Viewed = TEV2_EXTENDED_PROPERTIES;

    std::vector<TextsView> stringArrays;
    std::vector<NamedTrackView<TEV2_ANIMATABLE_INT32>> intValues;
    std::vector<NamedTrackView<TEV2_ANIMATABLE_FLOAT32>> floatValues;
    std::vector<NamedTrackView<TEV2_ANIMATABLE_VECTOR_3>> vector3Values;
    std::vector<NamedTrackView<TEV2_ANIMATABLE_VECTOR_4>> vector4Values;
};

struct NodeView
{
    using Viewed = TEV2_MATRIX_NODE;

    TextView name;
    std::int32_t parentIndex = -1;
    TEV2_TRACK_VIEW<TEV2_ANIMATABLE_VECTOR_3> translation;
    TEV2_TRACK_VIEW<TEV2_ANIMATABLE_QUATERNION> rotation;
    TEV2_TRACK_VIEW<TEV2_ANIMATABLE_VECTOR_3> scale;
    TEV2_MATRIX_3X4 worldMatrix;
    TextView userText;
    PropertiesView properties;
};

/// Texts and tracks of views.
class FromViews
{
public:
    explicit FromViews(std::pmr::memory_resource& texts) : texts_(texts) {}

    /// Where the units are, or a copy of those that are not aligned.
    std::u16string_view Text(const TextView& text) const
    {
        const void* units = text.begin;
        if (reinterpret_cast<std::uintptr_t>(units) % alignof(char16_t) != 0 && text.count != 0)
        {
            void* const copy = texts_.allocate(text.count * sizeof(char16_t), alignof(char16_t));
            std::memcpy(copy, units, text.count * sizeof(char16_t));
            units = copy;
        }
        return {static_cast<const char16_t*>(units), text.count};
    }

    template <typename Family>
    static TrackSource Track(const TEV2_TRACK_VIEW<Family>& track)
    {
        return {track.present,
                track.type,
                {track.m_times.begin, track.m_times.count},
                track.m_values.begin,
                sizeof(typename Family::Value),
                track.m_values.count};
    }

private:
    std::pmr::memory_resource& texts_;
};

/// Bytes of the sources of an owner's properties.
template <typename Properties>
std::size_t SourceBytes(const Properties& properties)
{
    return sizeof(PropertySource) *
           (properties.stringArrays.size() + properties.intValues.size() + properties.floatValues.size() +
            properties.vector3Values.size() + properties.vector4Values.size());
}

/// The nodes of a hierarchy: an array that keeps them as sources of a clip, all but the last.
class NodeViews
{
public:
    using value_type = NodeView;

    NodeViews(std::pmr::memory_resource& texts, ClipSource& source) : from_(texts), source_(source) {}

    /// What the nodes are read by; sources of their properties count there. Fails it where they exceed the limits.
    TEV2_MEMORY_CURSOR* cursor = nullptr;

    void clear()
    {
        source_.nodes.clear();
        source_.properties.clear();
        last_ = {};
        has_last_ = false;
    }

    void reserve(std::size_t count) { source_.nodes.reserve(count); }

    NodeView& emplace_back()
    {
        KeepLast();
        has_last_ = true;
        return last_;
    }

    void KeepLast()
    {
        const bool keeps =
            has_last_ && !cursor->Failed() && cursor->TakeMemory(SourceBytes(last_.properties));
        has_last_ = false;
        if (!keeps)
            return;
        const auto node = static_cast<std::uint32_t>(source_.nodes.size());
        NodeSource& kept = source_.nodes.emplace_back();
        kept.name = from_.Text(last_.name);
        kept.parent = last_.parentIndex;
        kept.translation = FromViews::Track(last_.translation);
        kept.rotation = FromViews::Track(last_.rotation);
        kept.scale = FromViews::Track(last_.scale);
        kept.worldMatrix = last_.worldMatrix;
        AddProperties(last_.properties, {node, false}, from_, source_);
    }

private:
    FromViews from_;
    ClipSource& source_;
    NodeView last_; ///< used again for each node: all nodes of a hierarchy have the same fields
    bool has_last_ = false;
};

struct HierarchyView
{
    using Viewed = TEV2_MATRIX_HIERARCHY;

    NodeViews nodes;
};

class ImageReader final : public TEV2_SCENE_READER
{
public:
    ImageReader(TEV2& rest, std::pmr::memory_resource& texts, ClipSource& source)
        : TEV2_SCENE_READER(rest, TEV2_BODIES::Skip), hierarchy_{{texts, source}}, source_(source)
    {
    }

    /// Loads node 0 as a record, which says what the up axis is. With `all` the others, too.
    bool LoadNodes(TEV2_MEMORY_CURSOR& cursor, TEV2_MATRIX_HIERARCHY& hierarchy, bool all) const
    {
        if (source_.nodes.empty())
            return true;
        TEV2_MEMORY_CURSOR again(cursor.begin, static_cast<std::size_t>(cursor.end - cursor.begin), nullptr,
                                 {.bytes = std::max<std::size_t>(cursor.Allowance(), 1)});
        again.current += hierarchy_begin_;
        if (all)
            hierarchy.Load(again, hierarchy_version_);
        else if (again.ReadU32(); again.TakeMemory(sizeof(TEV2_MATRIX_NODE)))
            hierarchy.nodes.emplace_back().Load(again, hierarchy_version_);
        // They were there before, so it can only be the limit.
        return !again.Failed() || cursor.TakeMemory(std::numeric_limits<std::size_t>::max());
    }

protected:
    bool ReadChunk(TEV2_MEMORY_CURSOR& cursor, std::uint32_t id, float version) override
    {
        if (id != kMatrixHierarchyChunk)
            return TEV2_SCENE_READER::ReadChunk(cursor, id, version);
        hierarchy_begin_ = cursor.Offset();
        hierarchy_version_ = version;
        const RecordScope scope(cursor, "matrixHierarchy");
        if (!TEV2_MATRIX_HIERARCHY::AllowCount(cursor))
            return false;
        hierarchy_.nodes.cursor = &cursor;
        LoadFields(hierarchy_, cursor, version);
        hierarchy_.nodes.KeepLast();
        return TEV2_MATRIX_HIERARCHY::AllowNesting(
            cursor, source_.nodes.size(), [this](std::size_t node) { return source_.nodes[node].parent; });
    }

private:
    HierarchyView hierarchy_;
    ClipSource& source_;
    std::size_t hierarchy_begin_ = 0;
    float hierarchy_version_ = 0.0f;
};

/// Whether a node has a parent that does not come before it.
bool HasLateParents(const std::vector<NodeSource>& nodes)
{
    for (std::size_t node = 0; node < nodes.size(); ++node)
        if (const auto parent = static_cast<std::size_t>(nodes[node].parent);
            parent >= node && parent < nodes.size())
            return true;
    return false;
}

} // namespace

bool ImageSource::Load(TEV2_MEMORY_CURSOR& cursor)
{
    ImageReader reader(rest_, texts_, source_);
    if (!reader.Read(cursor))
        return false;
    TEV2_MATRIX_HIERARCHY& hierarchy = rest_.matrixHierarchy;
    const bool evaluate = !rest_.weightedMeshes.empty() && HasLateParents(source_.nodes);
    if (!reader.LoadNodes(cursor, hierarchy, evaluate))
        return false;
    if (evaluate)
    {
        // As a load does that finds weighted meshes: a node in front of its parent finds that matrix there.
        hierarchy.SetTime(rest_.environment.timeRange.minimum);
        for (std::size_t node = 0; node < source_.nodes.size(); ++node)
            source_.nodes[node].worldMatrix = hierarchy.nodes[node].worldMatrix;
    }
    for (const auto& camera : rest_.cameras)
        if (camera && !cursor.TakeMemory(SourceBytes(camera->properties)))
            return false;
    AddRest(rest_, source_);
    return true;
}

} // namespace TEV2_PLAYBACK
