#include "tev2_loader/names.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/text.h"
#include "tools/tv2/tree_writer.h"

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

Json Number(float value)
{
    return JsonFloat(value);
}

Json Number(std::int32_t value)
{
    return value;
}

/// The components of a vector, a range or a quaternion.
template <ComponentValue Value>
Json Number(const Value& value)
{
    Json list = Json::array();
    std::apply([&list](const auto&... component) { (list.push_back(JsonFloat(component)), ...); },
               value.Components());
    return list;
}

/// The value of a track at the present time; null without a track.
template <typename Track>
Json ValueOf(const std::unique_ptr<Track>& track)
{
    return track ? Number(track->GetValue()) : Json();
}

Json PropertiesOf(const TEV2_MATRIX_NODE& node)
{
    Json list = Json::array();
    VisitProperties(node.properties,
                    [&list](const char* kind, const auto& property)
                    {
                        Json entry = {{"name", Name(property)}, {"kind", kind}};
                        if constexpr (requires { property.strings; })
                        {
                            entry["value"] = Json::array();
                            for (const TEV2_WIDE_STRING& text : property.strings)
                                entry["value"].push_back(ReadableText(text.Text()));
                        }
                        else
                        {
                            entry["keys"] = KeyCount(property.track);
                            entry["value"] = ValueOf(property.track);
                        }
                        list.push_back(std::move(entry));
                    });
    return list;
}

/// One node on each line, so that no scene is kept twice.
class JsonTree : public TreeWriter
{
public:
    JsonTree(const TreeView& view, std::ostream& out) : view_(view), out_(out) {}

    void Begin() override
    {
        Json json = {{"file", view_.file.argument}};
        json["notes"] = view_.notes;
        if (view_.time)
            DescribeTime(json);
        std::string members = JsonAnswer(json);
        members.erase(members.rfind("\n}"));
        out_ << members << ",\n  \"nodes\": [";
    }

    void Node(const ShownNode& shown) override
    {
        out_ << separator_ << "\n    "
             << Describe(shown).dump(-1, ' ', false, Json::error_handler_t::replace);
        separator_ = ",";
    }

    void End() override { out_ << (*separator_ == ',' ? "\n  ]\n}\n" : "]\n}\n"); }

private:
    void DescribeTime(Json& json) const
    {
        const TEV2& scene = *view_.file.scene;
        json["time"] = JsonFloat(*view_.time);
        json["timeRange"] = {{"start", JsonFloat(scene.environment.timeRange.minimum)},
                             {"end", JsonFloat(scene.environment.timeRange.maximum)}};
        json["outsideRange"] = view_.outside_range;
        const auto active = view_.evaluated.ActiveCamera();
        json["activeCamera"] = active ? Json(*active) : Json();
        json["cameras"] = Json::array();
        for (const auto& camera : scene.cameras)
        {
            const bool placed = camera->value < scene.matrixHierarchy.nodes.size();
            json["cameras"].push_back({{"name", Name(*camera)},
                                       {"node", camera->value == kNone ? Json() : Json(camera->value)},
                                       {"nodeName", placed ? Name(view_.Node(camera->value)) : ""},
                                       {"inverseAspect", JsonFloat(camera->inverseAspect)},
                                       {"fieldOfView", ValueOf(camera->fieldOfView)},
                                       {"distance", ValueOf(camera->distance)},
                                       {"clipRange", ValueOf(camera->clipRange)}});
        }
    }

    Json Describe(const ShownNode& shown) const
    {
        const TEV2_MATRIX_NODE& node = view_.Node(shown.node);
        Json json = {{"node", shown.node}, {"name", Name(node)}};
        json["path"] = "matrixHierarchy.nodes[" + std::to_string(shown.node) + ']';
        json["parent"] = node.parentIndex;
        json["depth"] = shown.depth;
        json["children"] = view_.tree.Children(shown.node).size();
        json["kinds"] = view_.objects.KindsAt(shown.node);
        json["objects"] = Json::array();
        for (const NodeObject& object : view_.objects.At(shown.node))
        {
            json["objects"].push_back(
                {{"path", object.path}, {"name", ReadableText(object.name->Text())}, {"kind", object.kind}});
        }
        json["keys"] = {{"translation", KeyCount(node.translation)},
                        {"rotation", KeyCount(node.rotation)},
                        {"scale", KeyCount(node.scale)}};
        json["properties"] = PropertiesOf(node);
        if (view_.time)
            DescribePose(node, json);
        return json;
    }

    static void DescribePose(const TEV2_MATRIX_NODE& node, Json& json)
    {
        const LocalPose local = LocalPoseOf(node);
        Json degrees = Json::array();
        for (const double angle : DegreesOf(local.rotation))
            degrees.push_back(JsonDouble(angle));
        json["local"] = {{"translation", Number(local.translation)},
                         {"rotation", Number(local.rotation)},
                         {"degrees", degrees},
                         {"scale", Number(local.scale)}};
        json["world"] = Json::array();
        for (const auto& row : node.worldMatrix.m)
            for (const float element : row)
                json["world"].push_back(JsonFloat(element));
    }

    const TreeView& view_;
    std::ostream& out_;
    const char* separator_ = "";
};

} // namespace

std::unique_ptr<TreeWriter> MakeJsonTree(const TreeView& view, std::ostream& out)
{
    return std::make_unique<JsonTree>(view, out);
}

} // namespace tv2
