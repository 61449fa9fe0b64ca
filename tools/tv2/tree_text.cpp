#include "tev2_loader/names.h"
#include "tools/tv2/text.h"
#include "tools/tv2/tree_writer.h"

#include <numbers>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

constexpr std::size_t kDeepestLines = 40; ///< below, a number says how deep a node is
constexpr double kDegrees = 180.0 / std::numbers::pi;

std::string NumberText(std::int32_t value)
{
    return std::to_string(value);
}

std::string NumberText(double value)
{
    return ShortNumber(value + 0.0); // -0 is 0
}

std::string NumberText(float value)
{
    return NumberText(static_cast<double>(value));
}

std::string Separated(const auto&... numbers)
{
    std::string text;
    ((text += (text.empty() ? "" : ", ") + NumberText(numbers)), ...);
    return text;
}

template <typename Number>
std::string Separated(const std::array<Number, 3>& numbers)
{
    return Separated(numbers[0], numbers[1], numbers[2]);
}

template <ComponentValue Value>
std::string NumberText(const Value& value)
{
    return std::apply([](const auto&... component) { return Separated(component...); }, value.Components());
}

std::string NameOf(const TEV2_WIDE_STRING& name)
{
    return name.Text().empty() ? "(no name)" : OneLine(ReadableText(name.Text()));
}

std::string PropertyText(const TEV2_NAMED_STRING_ARRAY& property)
{
    std::vector<std::string> texts;
    for (const TEV2_WIDE_STRING& text : property.strings)
        texts.push_back(ReadableText(text.Text()));
    return texts.empty() ? "no texts" : Listed(texts);
}

template <typename Family>
std::string PropertyText(const TEV2_NAMED_ANIMATABLE<Family>& property)
{
    if (!property.track)
        return "no value";
    const std::size_t keys = KeyCount(property.track);
    return NumberText(property.track->GetValue()) +
           (keys > 1 ? " (" + CountOf(keys, "key", "keys") + ')' : "");
}

std::string LensText(const TEV2_CAMERA& camera)
{
    std::string text = "no field of view";
    if (camera.fieldOfView)
        text = "field of view " + NumberText(static_cast<double>(camera.fieldOfView->GetValue()) * kDegrees) +
               " degrees";
    text += ", height " + NumberText(camera.inverseAspect) + " of the width";
    if (camera.clipRange)
    {
        const TEV2_FLOAT32_RANGE range = camera.clipRange->GetValue();
        text += ", from " + NumberText(range.minimum) + " to " + NumberText(range.maximum) + " m";
    }
    return text;
}

class TextTree : public TreeWriter
{
public:
    TextTree(const TreeView& view, std::ostream& out) : view_(view), out_(out) {}

    void Begin() override
    {
        const std::size_t nodes = view_.file.scene->matrixHierarchy.nodes.size();
        out_ << Printable(view_.file.title) << ": " << CountOf(nodes, "node", "nodes")
             << ", with keys of translation (T), rotation (R) and scale (S)";
        if (view_.time)
            out_ << ", at " << FloatText(*view_.time) << " s";
        out_ << '\n';
    }

    void Node(const ShownNode& shown) override
    {
        const TEV2_MATRIX_NODE& node = view_.Node(shown.node);
        Branch(shown);
        out_ << NameOf(node.name) << Kinds(shown.node);
        Keys("  T ", KeyCount(node.translation));
        Keys("  R ", KeyCount(node.rotation));
        Keys("  S ", KeyCount(node.scale));
        if (view_.tree.IsCut(shown.node))
            out_ << "  (its parents form a circle)";
        if (const std::size_t children = view_.tree.Children(shown.node).size();
            children > 0 && !shown.shows_children)
            out_ << "  (" << CountOf(children, "child", "children") << " not shown)";
        out_ << '\n';
        VisitProperties(node.properties,
                        [&](const char*, const auto& property) {
                            Detail(shown) << NameOf(property.name) << " = " << PropertyText(property) << '\n';
                        });
        if (view_.time)
            Pose(shown, node);
    }

    void End() override
    {
        if (view_.time)
            Cameras();
        for (const std::string& note : view_.notes)
            out_ << "note: " << Printable(note) << '\n';
    }

private:
    void Branch(const ShownNode& shown)
    {
        open_.resize(shown.depth);
        if (shown.depth > 0)
            open_.back() = !shown.last;
        Lines(std::min(shown.depth, kDeepestLines + 1) - (shown.depth > 0 ? 1 : 0));
        if (shown.depth > kDeepestLines)
            out_ << '(' << shown.depth << ") ";
        else if (shown.depth > 0)
            out_ << (shown.last ? "└─ " : "├─ ");
    }

    /// A line of its own below a node.
    std::ostream& Detail(const ShownNode& shown)
    {
        Lines(std::min(shown.depth, kDeepestLines));
        return out_ << (shown.shows_children ? "│" : " ") << "     ";
    }

    void Lines(std::size_t depth)
    {
        for (std::size_t level = 0; level < depth; ++level)
            out_ << (open_[level] ? "│  " : "   ");
    }

    void Keys(const char* label, std::size_t keys)
    {
        if (keys > 0)
            out_ << label << CountText(keys);
    }

    /// ` (joint, mesh "Body")`, or nothing.
    std::string Kinds(std::size_t node) const
    {
        std::string text = view_.objects.IsJoint(node) ? "joint" : "";
        constexpr std::size_t kMostObjects = 12;
        const auto objects = view_.objects.At(node);
        for (const NodeObject& object : objects.first(std::min(objects.size(), kMostObjects)))
            text += (text.empty() ? "" : ", ") + std::string(object.kind) + ' ' +
                    Quoted(ReadableText(object.name->Text()));
        if (objects.size() > kMostObjects)
            text += " and " + CountText(objects.size() - kMostObjects) + " more";
        return text.empty() ? "" : " (" + text + ')';
    }

    void Pose(const ShownNode& shown, const TEV2_MATRIX_NODE& node)
    {
        const LocalPose local = LocalPoseOf(node);
        Detail(shown) << "local  " << NumberText(local.translation) << " m;  "
                      << Separated(DegreesOf(local.rotation)) << " degrees, quaternion "
                      << NumberText(local.rotation) << ";  scale " << NumberText(local.scale) << '\n';
        const WorldPose world = WorldPoseOf(node.worldMatrix);
        Detail(shown) << "world  " << NumberText(world.translation) << " m;  " << Separated(world.degrees)
                      << " degrees;  scale " << Separated(world.scale) << '\n';
    }

    void Cameras()
    {
        const TEV2& scene = *view_.file.scene;
        for (const auto& camera : scene.cameras)
        {
            out_ << "camera " << Quoted(Name(*camera)) << ": " << LensText(*camera) << '\n';
        }
        const auto active = view_.evaluated.ActiveCamera();
        if (!active)
            return;
        out_ << "active camera: ";
        if (*active >= 0 && static_cast<std::size_t>(*active) < scene.cameras.size())
            out_ << Quoted(Name(*scene.cameras[static_cast<std::size_t>(*active)])) << '\n';
        else
            out_ << (*active == -1 ? "none" : "none, the switcher has " + std::to_string(*active)) << '\n';
    }

    const TreeView& view_;
    std::ostream& out_;
    std::vector<bool> open_; ///< of each level above, whether more siblings follow
};

} // namespace

std::unique_ptr<TreeWriter> MakeTextTree(const TreeView& view, std::ostream& out)
{
    return std::make_unique<TextTree>(view, out);
}

} // namespace tv2
