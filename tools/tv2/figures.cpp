#include "tools/tv2/figures.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

constexpr double kWidestHalf = 1.5; // of a picture at distance 1; wider ones are clamped
constexpr double kUsualHalf = 0.36; // without a field of view: 40 degrees
constexpr double kTallestAspect = 4.0;

using Vector = std::array<double, 3>;

/// The axes of the paper. Relative to node 0 a whole scene has Z up and Y to the front, a selection has Y up and Z to
/// the back: node 0 is then the root that the exporter inserted.
struct Paper
{
    std::size_t right;
    std::size_t up;
    double right_sign;
    double up_sign;

    PaperPoint operator()(const Vector& place) const
    {
        return {right_sign * place[right], up_sign * place[up]};
    }
};

Paper PaperFor(const TEV2_MATRIX_HIERARCHY& hierarchy, const std::string& view)
{
    const bool selection = hierarchy.nodes[0].name.Text() == kInsertedRootName;
    const std::size_t up = selection ? 1 : 2;
    const std::size_t depth = selection ? 2 : 1;
    if (view == "top")
        return {0, depth, 1.0, selection ? 1.0 : -1.0};
    return view == "side" ? Paper{depth, up, selection ? -1.0 : 1.0, 1.0} : Paper{0, up, 1.0, 1.0};
}

Vector Column(const TEV2_MATRIX_3X4& matrix, int column)
{
    return {static_cast<double>(matrix.m[0][column]), static_cast<double>(matrix.m[1][column]),
            static_cast<double>(matrix.m[2][column])};
}

Vector OfLengthOne(const Vector& vector)
{
    const double length = std::hypot(vector[0], vector[1], vector[2]);
    return length > 0.0 ? Vector{vector[0] / length, vector[1] / length, vector[2] / length} : vector;
}

bool Finite(const PaperPoint& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y);
}

/// Half the width and half the height of a camera's picture at distance 1.
std::pair<double, double> HalfPicture(const TEV2_CAMERA& camera)
{
    double half = kUsualHalf;
    if (camera.fieldOfView && !camera.fieldOfView->m_times.empty())
    {
        const double angle = static_cast<double>(camera.fieldOfView->GetValue());
        if (angle > 0.0)
            half = std::tan(std::min(angle * 0.5, std::atan(kWidestHalf)));
    }
    const double aspect = static_cast<double>(camera.inverseAspect);
    return {half, half * (aspect > 0.0 ? std::min(aspect, kTallestAspect) : 1.0)};
}

/// The role of each node; constant over time.
struct Cast
{
    std::vector<std::pair<std::size_t, std::size_t>> bones; ///< parent and child; node 0 is nobody's parent
    std::vector<std::size_t> props;
    std::map<std::size_t, const TEV2_CAMERA*> cameras; ///< by node

    explicit Cast(const TEV2& scene)
    {
        const auto& nodes = scene.matrixHierarchy.nodes;
        for (const auto& camera : scene.cameras)
            if (camera->value < nodes.size())
                cameras.emplace(camera->value, camera.get());
        std::vector<bool> in_bone(nodes.size());
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            const std::int32_t above = nodes[i].parentIndex;
            const auto parent = static_cast<std::size_t>(std::max(above, 0));
            if (above > 0 && parent < nodes.size() && !cameras.contains(i) && !cameras.contains(parent))
            {
                bones.emplace_back(parent, i);
                in_bone[parent] = in_bone[i] = true;
            }
        }
        for (std::size_t i = 1; i < nodes.size(); ++i)
            if (!in_bone[i] && !cameras.contains(i))
                props.push_back(i);
    }
};

/// Projects the nodes at the current time onto paper.
class Projection
{
public:
    Projection(const TEV2& scene, const Paper& paper)
        : nodes_(scene.matrixHierarchy.nodes), paper_(paper), upright_(Inverse(nodes_[0].worldMatrix))
    {
    }

    Figure Draw(const Cast& cast) const
    {
        Figure figure;
        for (const auto& [parent, child] : cast.bones)
        {
            const std::pair bone(Origin(Place(parent)), Origin(Place(child)));
            if (Finite(bone.first) && Finite(bone.second))
                figure.bones.push_back(bone);
        }
        for (const std::size_t node : cast.props)
        {
            const PaperProp prop = Prop(node);
            if (Finite(prop.origin) && std::all_of(prop.axes.begin(), prop.axes.end(), Finite))
                figure.props.push_back(prop);
        }
        for (const auto& [node, entity] : cast.cameras)
        {
            const PaperCamera camera = Camera(node, *entity);
            if (Finite(camera.origin) && Finite(camera.above) &&
                std::all_of(camera.corners.begin(), camera.corners.end(), Finite))
                figure.cameras.push_back(camera);
        }
        return figure;
    }

private:
    TEV2_MATRIX_3X4 Place(std::size_t node) const { return Product(upright_, nodes_[node].worldMatrix); }

    PaperPoint Origin(const TEV2_MATRIX_3X4& place) const { return paper_(Column(place, 3)); }

    PaperProp Prop(std::size_t node) const
    {
        const TEV2_MATRIX_3X4 place = Place(node);
        PaperProp prop{node, Origin(place), {}};
        for (int axis = 0; axis < 3; ++axis)
            prop.axes[static_cast<std::size_t>(axis)] = paper_(OfLengthOne(Column(place, axis)));
        return prop;
    }

    /// It looks along its node's Z axis; Y is up in the picture and X to the right.
    PaperCamera Camera(std::size_t node, const TEV2_CAMERA& entity) const
    {
        const PaperProp axes = Prop(node);
        const auto [half_width, half_height] = HalfPicture(entity);
        const auto at = [&axes](double x, double y) -> PaperPoint
        {
            const auto& [right, up, ahead] = axes.axes;
            return {x * right.x + y * up.x + ahead.x, x * right.y + y * up.y + ahead.y};
        };
        return {node,
                axes.origin,
                {at(-half_width, half_height), at(half_width, half_height), at(half_width, -half_height),
                 at(-half_width, -half_height)},
                at(0.0, half_height * 1.5)};
    }

    const std::vector<TEV2_MATRIX_NODE>& nodes_;
    Paper paper_;
    TEV2_MATRIX_3X4 upright_;
};

} // namespace

void PaperBox::Add(const PaperPoint& point)
{
    least = {std::min(least.x, point.x), std::min(least.y, point.y)};
    most = {std::max(most.x, point.x), std::max(most.y, point.y)};
}

std::vector<Figure> PoseFigures(TEV2& scene, const std::string& view, std::size_t most)
{
    if (scene.matrixHierarchy.nodes.empty())
        return {};
    const Cast cast(scene);
    const Paper paper = PaperFor(scene.matrixHierarchy, view);
    const float start = scene.environment.timeRange.minimum;
    const float end = scene.environment.timeRange.maximum;
    std::vector<Figure> figures;
    const std::size_t count = start == end ? 1 : most;
    for (std::size_t i = 0; i < count; ++i)
    {
        const float part = count > 1 ? static_cast<float>(i) / static_cast<float>(count - 1) : 0.0f;
        const float time = start + (end - start) * part;
        scene.matrixHierarchy.SetTime(time);
        for (const auto& camera : scene.cameras)
            camera->SetTime(time);
        figures.push_back(Projection(scene, paper).Draw(cast));
        figures.back().time = time;
    }
    const bool still = std::all_of(figures.begin(), figures.end(),
                                   [&](const Figure& figure) { return figure.LooksLike(figures.front()); });
    figures.resize(still ? 1 : figures.size());
    return figures;
}

} // namespace tv2
