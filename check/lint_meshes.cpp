#include "check/lint_group.h"
#include "check/track_view.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace tev2_check
{

using namespace TEV2_LOADER;

namespace
{

constexpr CheckCode kBoneNodeOutside = {"bone-node-outside", Severity::Warning,
                                        "The node of a bone is beyond the nodes."};
constexpr CheckCode kBoneRepeated = {"bone-repeated", Severity::Note, "Two bones of a mesh are one node."};
constexpr CheckCode kWeightsNotOne = {"weights-not-one", Severity::Warning,
                                      "The weights of a vertex have a negative one among them, or a sum that "
                                      "differs from 1 by more than 0.001."};
constexpr CheckCode kNoBindMatrices = {"no-bind-matrices", Severity::Note,
                                       "A mesh has bones but no bind matrices: the pose at the start of the "
                                       "time range counts as its bind pose."};
constexpr CheckCode kNormalNotUnit = {
    "normal-not-unit", Severity::Note,
    "The lengths of more than 1 % of the normals of a mesh differ from 1 by more than 0.01."};
constexpr CheckCode kFrontAgainstNormals = {
    "front-against-normals", Severity::Note,
    "The fronts of more than 1 % of the triangles of a mesh face away from their normals."};
constexpr CheckCode kTriangleDegenerate = {"triangle-degenerate", Severity::Note,
                                           "Two corners of a triangle are one vertex."};
constexpr CheckCode kBoundsTooSmall = {
    "bounds-too-small", Severity::Note,
    "A vertex is more than a millimetre outside the bounds of its mesh, which do not move."};
constexpr CheckCode kTargetRepeated = {"target-repeated", Severity::Note,
                                       "Two targets of a mesh have the same name."};
constexpr CheckCode kMeshCodes[] = {kBoneNodeOutside,    kBoneRepeated,   kWeightsNotOne,
                                    kNoBindMatrices,     kNormalNotUnit,  kFrontAgainstNormals,
                                    kTriangleDegenerate, kBoundsTooSmall, kTargetRepeated};

constexpr double kWeightTolerance = 0.001;
constexpr double kNormalTolerance = 0.01;
constexpr float kBoundsTolerance = 0.001F;

/// What is too little of a whole to be worth a note: up to 1 %.
bool IsMuch(std::size_t part, std::size_t whole)
{
    return part * 100 > whole;
}

/// In double precision, where no product of finite numbers of a file is infinite.
struct Point
{
    double x, y, z;

    explicit Point(const TEV2_VECTOR_3& v)
        : x(static_cast<double>(v.x)), y(static_cast<double>(v.y)), z(static_cast<double>(v.z))
    {
    }
    Point(double the_x, double the_y, double the_z) : x(the_x), y(the_y), z(the_z) {}
    Point operator-(const Point& b) const { return {x - b.x, y - b.y, z - b.z}; }
    Point operator+(const Point& b) const { return {x + b.x, y + b.y, z + b.z}; }
    double operator*(const Point& b) const { return x * b.x + y * b.y + z * b.z; }
};

Point Cross(const Point& a, const Point& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

bool HasEqualCorners(const TEV2_TRIANGLE& triangle)
{
    return triangle[0] == triangle[1] || triangle[1] == triangle[2] || triangle[2] == triangle[0];
}

/// Where an element of a column begins whose first one is at `field`.
TEV2_FIELD Element(const TEV2_FIELD& field, std::size_t element, std::size_t bytes)
{
    TEV2_FIELD place = field;
    place.offset += element * bytes;
    return place;
}

/// Checks each column of a mesh when its first number comes.
class MeshGroup : public LintGroup
{
public:
    MeshGroup(const LoadedFile& file, Findings& findings) : scene_(*file.scene), findings_(findings) {}

    void Number(const TEV2_FIELD& field, double number) override
    {
        if ((field.item != 0 && field.item != TEV2_FIELD::kNoIndex) || field.component != 0 ||
            !IsMesh(field.chunkId))
            return;
        Enter(field);
        const std::string_view label = field.label;
        if (label == "influences" && number == 0.0 && vertices_->Count() > 0)
            findings_.AddForPath(kWeightsNotOne, field, path_, "no vertex has any");
        if (label == "triangles")
            CheckTriangles(field);
        else if (label == "bones")
            CheckBones(field);
        else if (label == "weights")
            CheckWeights(field);
        else if (field.record.ends_with(".vertices"))
        {
            if (label == "positions")
                CheckBounds(field, vertices_->positions, sizeof(TEV2_VECTOR_3));
            else if (label == "normals")
                CheckNormals(field);
        }
    }

    void Text(const TEV2_FIELD& field, const TEV2_WIDE_STRING& text) override
    {
        if (!IsMesh(field.chunkId) || std::string_view(field.label) != "name" ||
            field.record.find("].targets[") == std::string::npos)
            return;
        Enter(field);
        if (field.index == 0)
            targets_.clear();
        if (!targets_.insert(text.Text()).second)
            findings_.AddOnce(kTargetRepeated, field, path_,
                              [&] { return "another target called " + QuotedName(text); });
    }

    void Track(const TEV2_FIELD& field, const TEV2_ANIMATABLE* track) override
    {
        if (field.chunkId != kAnimMeshChunk || track == nullptr ||
            std::string_view(field.label) != "position")
            return;
        Enter(field);
        const auto& positions = static_cast<const TEV2_ANIMATABLE_VECTOR_3_LINEAR&>(*track);
        const TrackView view(*track);
        CheckBounds(Element(field, 1, view.ValueOffset(0)), positions.m_values, sizeof(TEV2_VECTOR_3),
                    field.index);
    }

private:
    static bool IsMesh(std::uint32_t chunk)
    {
        return chunk == kRigidChunk || chunk == kAnimMeshChunk || chunk == kMorphMeshChunk ||
               chunk == kWeightedMeshChunk;
    }

    /// From now on the fields of the mesh that `field` is of come.
    void Enter(const TEV2_FIELD& field)
    {
        const std::string_view path = std::string_view(field.record).substr(0, field.record.find(']') + 1);
        if (path == path_)
            return;
        path_ = path;
        fronts_checked_ = false;
        skin_ = nullptr;
        const std::size_t index = IndexBehind(path.substr(0, path.find('[') + 1), path).value_or(0);
        if (field.chunkId == kRigidChunk)
            Enter(*std::as_const(scene_.rigids[index]));
        else if (field.chunkId == kAnimMeshChunk)
            Enter(*scene_.animMeshes[index]);
        else if (field.chunkId == kMorphMeshChunk)
            Enter(*scene_.morphMeshes[index]);
        else
            Enter(*scene_.weightedMeshes[index]);
    }

    template <typename Mesh>
    void Enter(const Mesh& mesh)
    {
        mesh_ = &mesh;
        vertices_ = &*mesh.vertices;
        if constexpr (requires { mesh.skin; })
            skin_ = &*mesh.skin;
    }

    /// Of one sub-object; the fronts of all of them with the first.
    void CheckTriangles(const TEV2_FIELD& field)
    {
        const std::size_t part =
            IndexBehind("subObjects[", std::string_view(field.record).substr(path_.size() + 1)).value_or(0);
        const auto& triangles = mesh_->subObjects[part].triangles;
        for (std::size_t i = 0; i < triangles.size(); ++i)
        {
            if (HasEqualCorners(triangles[i]))
            {
                findings_.AddOnce(kTriangleDegenerate, Element(field, i, sizeof(TEV2_TRIANGLE)), path_,
                                  [&]
                                  {
                                      return "triangle " + CountText(i) + " of sub-object " +
                                             CountText(part) + " has the corners " +
                                             std::to_string(triangles[i][0]) + ", " +
                                             std::to_string(triangles[i][1]) + ", " +
                                             std::to_string(triangles[i][2]);
                                  });
            }
        }
        if (!fronts_checked_ && field.chunkId != kAnimMeshChunk)
            CheckFronts(field);
        fronts_checked_ = true;
    }

    /// The front of a triangle is the side that (b - a) x (c - a) points to.
    void CheckFronts(const TEV2_FIELD& field)
    {
        if (vertices_->normals.empty())
            return;
        std::size_t against = 0;
        std::size_t all = 0;
        for (const TEV2_TRI_SUB_OBJECT& part : mesh_->subObjects)
        {
            all += part.triangles.size();
            for (const auto& [a, b, c] : part.triangles)
            {
                const Point start(vertices_->positions[a]);
                const Point front =
                    Cross(Point(vertices_->positions[b]) - start, Point(vertices_->positions[c]) - start);
                const Point normal = Point(vertices_->normals[a]) + Point(vertices_->normals[b]) +
                                     Point(vertices_->normals[c]);
                against += front * normal < 0.0 ? 1 : 0;
            }
        }
        if (IsMuch(against, all))
        {
            findings_.AddForPath(kFrontAgainstNormals, field, path_,
                                 CountText(against) + " of " + CountOf(all, "triangle", "triangles"));
        }
    }

    void CheckNormals(const TEV2_FIELD& field)
    {
        const auto& normals = vertices_->normals;
        std::size_t found = 0;
        std::size_t first = 0;
        for (std::size_t i = 0; i < normals.size(); ++i)
        {
            if (std::abs(Length(normals[i]) - 1.0) > kNormalTolerance)
            {
                first = found == 0 ? i : first;
                ++found;
            }
        }
        if (IsMuch(found, normals.size()))
        {
            findings_.AddForPath(kNormalNotUnit, Element(field, first, sizeof(TEV2_VECTOR_3)), path_,
                                 CountText(found) + " of " + CountOf(normals.size(), "normal", "normals") +
                                     ", that of vertex " + CountText(first) + " has the length " +
                                     ShortNumber(Length(normals[first])));
        }
    }

    static double Length(const TEV2_VECTOR_3& vector) { return std::sqrt(Point(vector) * Point(vector)); }

    /// `moving` is the vertex whose positions at its keys these are; otherwise they are of one vertex each.
    void CheckBounds(const TEV2_FIELD& field, const std::vector<TEV2_VECTOR_3>& positions, std::size_t bytes,
                     std::size_t moving = TEV2_FIELD::kNoIndex)
    {
        const auto* const bounds =
            static_cast<const TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR*>(mesh_->bounds.get());
        if (bounds == nullptr || bounds->m_values.size() != 1)
            return;
        const auto& [minimum, maximum] = bounds->m_values[0];
        for (std::size_t i = 0; i < positions.size(); ++i)
        {
            const TEV2_VECTOR_3& p = positions[i];
            const float outside = std::max({minimum.x - p.x, minimum.y - p.y, minimum.z - p.z,
                                            p.x - maximum.x, p.y - maximum.y, p.z - maximum.z});
            if (outside > kBoundsTolerance)
            {
                findings_.AddOnce(kBoundsTooSmall, Element(field, i, bytes), path_,
                                  [&]
                                  {
                                      return "vertex " +
                                             CountText(moving == TEV2_FIELD::kNoIndex ? i : moving) + " is " +
                                             FloatText(outside) + " m outside";
                                  });
            }
        }
    }

    void CheckBones(const TEV2_FIELD& field)
    {
        const auto& nodes = scene_.matrixHierarchy.nodes;
        std::vector<bool> seen(nodes.size());
        for (std::size_t i = 0; i < skin_->bones.size(); ++i)
        {
            const std::uint32_t node = skin_->bones[i];
            const TEV2_FIELD place = Element(field, i, sizeof node);
            if (node >= nodes.size())
            {
                findings_.AddOnce(kBoneNodeOutside, place, path_,
                                  [&] {
                                      return "bone " + CountText(i) + " is " +
                                             BeyondText("node", "nodes", node, nodes.size());
                                  });
            }
            else if (seen[node])
            {
                findings_.AddOnce(kBoneRepeated, place, path_,
                                  [&] { return "another bone " + QuotedName(nodes[node].name); });
            }
            else
            {
                seen[node] = true;
            }
        }
        if (skin_->bindMatrices.empty())
            findings_.AddForPath(kNoBindMatrices, field, path_,
                                 CountOf(skin_->bones.size(), "bone", "bones"));
    }

    void CheckWeights(const TEV2_FIELD& field)
    {
        const std::size_t entries = skin_->influences;
        for (std::size_t i = 0; i + entries <= skin_->weights.size(); i += entries)
        {
            const std::span<const float> weights(skin_->weights.data() + i, entries);
            double sum = 0.0;
            for (const float weight : weights)
                sum += static_cast<double>(weight);
            const float least = *std::ranges::min_element(weights);
            if (least < 0.0F || std::abs(sum - 1.0) > kWeightTolerance)
            {
                findings_.AddOnce(kWeightsNotOne, Element(field, i, sizeof(float)), path_,
                                  [&]
                                  {
                                      return "those of vertex " + CountText(i / entries) +
                                             (least < 0.0F ? " have " + FloatText(least) + " among them"
                                                           : " have the sum " + ShortNumber(sum));
                                  });
            }
        }
    }

    const TEV2& scene_;
    Findings& findings_;

    // The mesh whose fields come at present.
    std::string path_;
    const TEV2_TRI_OBJECT* mesh_ = nullptr;
    const TEV2_RIGID_VERTICES* vertices_ = nullptr;
    const TEV2_SKIN* skin_ = nullptr; ///< of a weighted mesh
    bool fronts_checked_ = false;
    std::set<std::u16string> targets_;
};

} // namespace

LintGroupRow MeshLint()
{
    return {kMeshCodes,
            [](const LoadedFile& file, const CheckOptions&, Findings& findings) -> std::unique_ptr<LintGroup>
            { return std::make_unique<MeshGroup>(file, findings); }};
}

} // namespace tev2_check
