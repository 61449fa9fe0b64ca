#include "check/lint_group.h"

#include <algorithm>
#include <cmath>

namespace tev2_check
{

using namespace TEV2_LOADER;

namespace
{

constexpr CheckCode kObjectNodeOutside = {
    "object-node-outside", Severity::Warning,
    "The node of a camera or another object, or of a reference, is beyond the nodes."};
constexpr CheckCode kMaterialOutside = {"material-outside", Severity::Warning,
                                        "A material of a mesh or an instance is beyond the materials."};
constexpr CheckCode kLightOutside = {
    "light-outside", Severity::Warning,
    "A light that shines on an object, or that a shader uses, is beyond the lights."};
constexpr CheckCode kLibraryOutside = {"library-outside", Severity::Warning,
                                       "The library of an object is beyond the libraries."};
constexpr CheckCode kInstanceSourceOutside = {
    "instance-source-outside", Severity::Warning,
    "An instance repeats nothing, or an object beyond those that its list names."};
constexpr CheckCode kInstanceMaterialsDiffer = {
    "instance-materials-differ", Severity::Warning,
    "An instance has more or fewer materials than its source has sub-objects."};
constexpr CheckCode kInstanceCornerOutside = {
    "instance-corner-outside", Severity::Warning,
    "A triangle of an instance has a corner beyond the vertices of its source."};
constexpr CheckCode kSplineGap = {"spline-gap", Severity::Warning,
                                  "A curve starts more than a millimetre from the end of the one before, or "
                                  "a closed spline does not close."};
constexpr CheckCode kObjectCodes[] = {
    kObjectNodeOutside,     kMaterialOutside,         kLightOutside,          kLibraryOutside,
    kInstanceSourceOutside, kInstanceMaterialsDiffer, kInstanceCornerOutside, kSplineGap};

constexpr float kGapTolerance = 0.001F;

/// A number that is an index in an array of the scene.
struct IndexRule
{
    std::string_view label;
    const CheckCode& code;
    std::string_view singular;
    std::string_view plural;
    bool may_be_none;
    std::size_t (*count)(const TEV2& scene);
};

std::size_t CountNodes(const TEV2& scene)
{
    return scene.matrixHierarchy.nodes.size();
}
std::size_t CountMaterials(const TEV2& scene)
{
    return scene.materials.size();
}
std::size_t CountLights(const TEV2& scene)
{
    return scene.lights.size();
}
std::size_t CountLibraries(const TEV2& scene)
{
    return scene.xrefs20.size();
}

constexpr IndexRule kIndexRules[] = {
    {"value", kObjectNodeOutside, "node", "nodes", true, CountNodes},
    {"node", kObjectNodeOutside, "node", "nodes", true, CountNodes},
    {"material", kMaterialOutside, "material", "materials", true, CountMaterials},
    {"materials", kMaterialOutside, "material", "materials", true, CountMaterials},
    {"lights", kLightOutside, "light", "lights", false, CountLights},
    {"light", kLightOutside, "light", "lights", true, CountLights},
    {"library", kLibraryOutside, "library", "libraries", true, CountLibraries},
};

/// What an instance repeats.
struct Source
{
    std::size_t count = 0;     ///< of the array that it is in
    const char* singular = ""; ///< what the array holds
    const char* plural = "";
    bool is_mesh = false; ///< a typed one
    std::string name;     ///< of the mesh
    std::size_t sub_objects = 0;
    std::size_t vertices = 0;
};

template <typename Object>
Source SourceIn(const TEV2::Array<Object>& objects, std::size_t index, const char* singular,
                const char* plural)
{
    Source source;
    source.count = objects.size();
    source.singular = singular;
    source.plural = plural;
    if constexpr (requires { objects[0]->subObjects; })
    {
        if (index < objects.size() && objects[index] && objects[index]->IsTyped())
        {
            const Object& mesh = *objects[index];
            source.is_mesh = true;
            source.name = QuotedName(mesh.name);
            source.sub_objects = mesh.subObjects.size();
            source.vertices = mesh.vertices->Count();
        }
    }
    return source;
}

/// The object at `index` of the array that an instance list names.
Source SourceOf(const TEV2& scene, std::size_t list, std::size_t index)
{
    switch (list)
    {
    case 0:
        return SourceIn(scene.animMeshes, index, "anim mesh", kAnimMeshChunk.title);
    case 1:
        return SourceIn(scene.bezierSplines, index, "bezier spline", kBezierSplineChunk.title);
    case 2:
        return SourceIn(scene.cameras, index, "camera", kCameraChunk.title);
    case 3:
        return SourceIn(scene.lights, index, "light", kLightChunk.title);
    case 4:
        return SourceIn(scene.morphMeshes, index, "morph mesh", kMorphMeshChunk.title);
    case 5:
        return SourceIn(scene.rigids, index, "rigid", kRigidChunk.title);
    case 6:
        return SourceIn(scene.weightedMeshes, index, "weighted mesh", kWeightedMeshChunk.title);
    case 7:
        return SourceIn(scene.helpers, index, "helper", kHelperChunk.title);
    case 8:
        return SourceIn(scene.xrefObjects, index, "cross-reference object", kXrefObjectChunk.title);
    default:
        return SourceIn(scene.speedTreeReferences, index, "SpeedTree reference", kXrefSpeedTreeChunk.title);
    }
}

float Distance(const TEV2_VECTOR_3& a, const TEV2_VECTOR_3& b)
{
    return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

/// The value of a track at a time, held before the first and after the last key; of none the origin.
TEV2_VECTOR_3 ValueAt(const TEV2_ANIMATABLE_VECTOR_3* track, float time)
{
    const auto* const linear = static_cast<const TEV2_ANIMATABLE_VECTOR_3_LINEAR*>(track);
    const std::size_t keys =
        linear == nullptr ? 0 : std::min(linear->m_times.size(), linear->m_values.size());
    if (keys == 0)
        return linear == nullptr || linear->m_values.empty() ? TEV2_VECTOR_3{} : linear->m_values[0];
    const auto begin = linear->m_times.begin();
    const auto after = static_cast<std::size_t>(
        std::upper_bound(begin, begin + static_cast<std::ptrdiff_t>(keys), time) - begin);
    if (after == 0 || after == keys)
        return linear->m_values[after == 0 ? 0 : keys - 1];
    const TEV2_VECTOR_3& a = linear->m_values[after - 1];
    const TEV2_VECTOR_3& b = linear->m_values[after];
    const float part =
        (time - linear->m_times[after - 1]) / (linear->m_times[after] - linear->m_times[after - 1]);
    return {a.x + (b.x - a.x) * part, a.y + (b.y - a.y) * part, a.z + (b.z - a.z) * part};
}

/// The greatest distance of two points at the keys of both.
float GreatestDistance(const TEV2_ANIMATABLE_VECTOR_3* a, const TEV2_ANIMATABLE_VECTOR_3* b)
{
    float greatest = Distance(ValueAt(a, 0.0F), ValueAt(b, 0.0F));
    for (const auto* track : {a, b})
        if (track != nullptr)
            for (const float time : track->m_times)
                greatest = std::max(greatest, Distance(ValueAt(a, time), ValueAt(b, time)));
    return greatest;
}

class ObjectGroup : public LintGroup
{
public:
    ObjectGroup(const LoadedFile& file, Findings& findings) : scene_(*file.scene), findings_(findings) {}

    void Number(const TEV2_FIELD& field, double number) override
    {
        if (field.label != label_)
            Choose(field.label);
        if (rule_ != nullptr)
            CheckIndex(field, number);
        else if (kind_ == Kind::kSource)
            CheckSource(field, number);
        else if (kind_ == Kind::kTriangles && field.chunkId == kInstanceSubObjectsChunk)
            CheckCorner(field, number);
        else if (kind_ == Kind::kClosed)
            CheckSpline(field);
    }

    void Track(const TEV2_FIELD& field, const TEV2_ANIMATABLE* track) override
    {
        if (field.chunkId == kBezierSplineChunk && track != nullptr && field.index > 0 &&
            std::string_view(field.label) == "start")
        {
            const auto& curves = static_cast<const TEV2_ANIM_BEZIER_SPLINE*>(spline_)->curves;
            NoteGap(field, field.offset, field.index,
                    GreatestDistance(curves[field.index - 1].end.get(), curves[field.index].start.get()));
        }
    }

private:
    enum class Kind
    {
        kOther,
        kSource,
        kTriangles,
        kClosed
    };

    /// Labels come in runs, so that most numbers cost one comparison.
    void Choose(const char* label)
    {
        label_ = label;
        const std::string_view text = label;
        const auto* const rule = std::ranges::find(kIndexRules, text, &IndexRule::label);
        rule_ = rule == std::end(kIndexRules) ? nullptr : rule;
        kind_ = text == "source"      ? Kind::kSource
                : text == "triangles" ? Kind::kTriangles
                : text == "closed"    ? Kind::kClosed
                                      : Kind::kOther;
    }

    void CheckIndex(const TEV2_FIELD& field, double number)
    {
        const auto index = static_cast<std::uint32_t>(number);
        const std::size_t count = rule_->count(scene_);
        if (index < count || (index == kNone && rule_->may_be_none))
            return;
        const bool one = field.item == TEV2_FIELD::kNoIndex;
        findings_.AddOnce(rule_->code, field, one ? field.record : field.record + '.' + field.label,
                          [&] { return BeyondText(rule_->singular, rule_->plural, index, count); });
    }

    void CheckSource(const TEV2_FIELD& field, double number)
    {
        const std::size_t list = IndexBehind("instanceLists[", field.record).value_or(0);
        const auto index = static_cast<std::uint32_t>(number);
        source_ = SourceOf(scene_, list, index);
        source_record_ = field.record;
        if (index >= source_.count)
        {
            findings_.AddForRecord(kInstanceSourceOutside, field,
                                   index == kNone
                                       ? "it repeats nothing"
                                       : BeyondText(source_.singular, source_.plural, index, source_.count));
        }
        if (!source_.is_mesh || field.chunkId != kInstanceMaterialsChunk)
            return;
        const auto& instance = static_cast<const TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS&>(
            *scene_.instanceLists[list][field.index]);
        if (instance.materials.size() != source_.sub_objects)
        {
            findings_.AddForRecord(kInstanceMaterialsDiffer, field,
                                   CountOf(instance.materials.size(), "material", "materials") + ", but " +
                                       source_.name + " has " +
                                       CountOf(source_.sub_objects, "sub-object", "sub-objects"));
        }
    }

    void CheckCorner(const TEV2_FIELD& field, double number)
    {
        if (!source_.is_mesh || number < static_cast<double>(source_.vertices))
            return;
        findings_.AddOnce(kInstanceCornerOutside, field, source_record_,
                          [&]
                          {
                              return "a corner of triangle " + CountText(field.item) + " is vertex " +
                                     std::to_string(static_cast<std::uint32_t>(number)) + ", but " +
                                     source_.name + " has " + CountOf(source_.vertices, "vertex", "vertices");
                          });
    }

    /// At the first field of a spline, its `closed`.
    void CheckSpline(const TEV2_FIELD& field)
    {
        const std::size_t object = IndexBehind("bezierSplines[", field.record).value_or(0);
        spline_ = scene_.bezierSplines[object]->splines[field.index].get();
        const std::size_t count = spline_->CurveCount();
        if (spline_->GetType() == TEV2_RIGID_BEZIER_SPLINE::kType)
        {
            const std::uint64_t first = field.offset + 2 * sizeof(std::uint32_t); // `closed` and the count
            for (std::size_t i = 1; i < count; ++i)
                NoteGap(field, first + i * sizeof(TEV2_BEZIER_POINTS), i,
                        Distance(spline_->Curve(i - 1).end, spline_->Curve(i).start));
        }
        if (!spline_->closed || count == 0)
            return;
        const float gap = GapAtEnd();
        if (gap > kGapTolerance)
            findings_.AddForRecord(kSplineGap, field,
                                   "closed, but its end is " + FloatText(gap) + " m from its start");
    }

    float GapAtEnd() const
    {
        const std::size_t last = spline_->CurveCount() - 1;
        if (spline_->GetType() == TEV2_RIGID_BEZIER_SPLINE::kType)
            return Distance(spline_->Curve(last).end, spline_->Curve(0).start);
        const auto& curves = static_cast<const TEV2_ANIM_BEZIER_SPLINE*>(spline_)->curves;
        return GreatestDistance(curves[last].end.get(), curves[0].start.get());
    }

    void NoteGap(const TEV2_FIELD& field, std::uint64_t offset, std::size_t curve, float gap)
    {
        if (!(gap > kGapTolerance))
            return;
        TEV2_FIELD place = field;
        place.offset = offset;
        findings_.AddOnce(kSplineGap, place, field.record.substr(0, field.record.find(".curves[")),
                          [&] {
                              return "curve " + CountText(curve) + " starts " + FloatText(gap) +
                                     " m from the end of the one before";
                          });
    }

    const TEV2& scene_;
    Findings& findings_;
    const char* label_ = nullptr;
    const IndexRule* rule_ = nullptr; ///< for numbers of label_
    Kind kind_ = Kind::kOther;
    Source source_; ///< of the instance whose fields come at present
    std::string source_record_;
    const TEV2_IBEZIER_SPLINE* spline_ = nullptr; ///< whose fields come at present
};

} // namespace

LintGroupRow ObjectLint()
{
    return {kObjectCodes,
            [](const LoadedFile& file, const CheckOptions&, Findings& findings) -> std::unique_ptr<LintGroup>
            { return std::make_unique<ObjectGroup>(file, findings); }};
}

} // namespace tev2_check
