#include "tests/host/import/builders/fbx_writer.h"

#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <sstream>

namespace fbx_writer
{
namespace
{

template <class Number>
std::string Bytes(Number number)
{
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

template <class Number>
std::string Array(char code, const std::vector<Number>& numbers, bool deflate)
{
    std::string raw(reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(Number));
    if (deflate)
    {
        uLongf size = compressBound(static_cast<uLong>(raw.size()));
        std::string packed(size, '\0');
        compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(raw.data()),
                 static_cast<uLong>(raw.size()));
        raw = packed.substr(0, size);
    }
    return code + Bytes(static_cast<std::uint32_t>(numbers.size())) + Bytes(std::uint32_t{deflate}) +
           Bytes(static_cast<std::uint32_t>(raw.size())) + raw;
}

std::string BinaryText(const std::string& text)
{
    return "S" + Bytes(static_cast<std::uint32_t>(text.size())) + text;
}

struct BinaryValue
{
    bool deflate;
    std::string operator()(Letter value) const { return {'C', value.letter}; }
    std::string operator()(std::int32_t value) const { return "I" + Bytes(value); }
    std::string operator()(std::int64_t value) const { return "L" + Bytes(value); }
    std::string operator()(double value) const { return "D" + Bytes(value); }
    std::string operator()(const std::string& text) const { return BinaryText(text); }
    std::string operator()(const Name& name) const
    {
        return BinaryText(name.name + std::string("\0\1", 2) + name.kind);
    }
    std::string operator()(const std::vector<std::int32_t>& list) const { return Array('i', list, deflate); }
    std::string operator()(const std::vector<std::int64_t>& list) const { return Array('l', list, deflate); }
    std::string operator()(const std::vector<float>& list) const { return Array('f', list, deflate); }
    std::string operator()(const std::vector<double>& list) const { return Array('d', list, deflate); }
};

class BinaryWriter
{
public:
    BinaryWriter(unsigned version, bool deflate) : wide_(version >= 7500), deflate_(deflate)
    {
        file_ = std::string("Kaydara FBX Binary  \0\x1a\0", 23) + Bytes(std::uint32_t{version});
    }

    void Write(const Node& node)
    {
        std::string values;
        for (const Value& value : node.values)
            values += std::visit(BinaryValue{deflate_}, value);
        const std::size_t header = file_.size();
        file_ += Word(0) + Word(node.values.size()) + Word(values.size()) +
                 static_cast<char>(node.name.size()) + node.name + values;
        if (!node.children.empty())
        {
            for (const Node& child : node.children)
                Write(child);
            End();
        }
        const std::string end = Word(file_.size());
        file_.replace(header, end.size(), end);
    }

    void End() { file_ += std::string(wide_ ? 25 : 13, '\0'); }
    std::string Take() { return std::move(file_); }

private:
    std::string Word(std::uint64_t number) const
    {
        return wide_ ? Bytes(number) : Bytes(static_cast<std::uint32_t>(number));
    }

    bool wide_;
    bool deflate_;
    std::string file_;
};

template <class Number>
std::string Listed(const std::vector<Number>& numbers)
{
    std::ostringstream text;
    text.precision(17);
    for (std::size_t i = 0; i < numbers.size(); ++i)
        text << (i ? "," : "") << numbers[i];
    return text.str();
}

template <class Number>
std::string TextArray(const std::vector<Number>& numbers)
{
    return "*" + std::to_string(numbers.size()) + " {\n a: " + Listed(numbers) + "\n} ";
}

struct TextValue
{
    std::string operator()(Letter value) const { return std::string(1, value.letter); }
    std::string operator()(std::int32_t value) const { return std::to_string(value); }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(double value) const { return Listed(std::vector<double>{value}); }
    std::string operator()(const std::string& text) const
    {
        std::string quoted = "\"";
        for (const char c : text)
            quoted += c == '"' ? std::string("&quot;") : std::string(1, c);
        return quoted + '"';
    }
    std::string operator()(const Name& name) const { return '"' + name.kind + "::" + name.name + '"'; }
    std::string operator()(const std::vector<std::int32_t>& list) const { return TextArray(list); }
    std::string operator()(const std::vector<std::int64_t>& list) const { return TextArray(list); }
    std::string operator()(const std::vector<float>& list) const { return TextArray(list); }
    std::string operator()(const std::vector<double>& list) const { return TextArray(list); }
};

void WriteText(const Node& node, const std::string& indent, std::string& file)
{
    file += indent + node.name + ": ";
    for (std::size_t i = 0; i < node.values.size(); ++i)
        file += (i ? ", " : "") + std::visit(TextValue(), node.values[i]);
    if (!node.children.empty() || node.values.empty())
    {
        file += " {\n";
        for (const Node& child : node.children)
            WriteText(child, indent + "\t", file);
        file += indent + "}";
    }
    file += '\n';
}

} // namespace

std::string Binary(unsigned version, const std::vector<Node>& nodes, bool deflate)
{
    BinaryWriter writer(version, deflate);
    for (const Node& node : nodes)
        writer.Write(node);
    writer.End();
    return writer.Take();
}

std::string Text(unsigned version, const std::vector<Node>& nodes)
{
    char head[128];
    std::snprintf(head, sizeof head,
                  "; FBX %u.%u.0 project file\n; ---\nFBXHeaderExtension:  {\n\tFBXVersion: %u\n}\n",
                  version / 1000, version % 1000 / 100, version);
    std::string file = head;
    for (const Node& node : nodes)
        WriteText(node, "", file);
    return file;
}

Node CurveObject(std::int64_t id, const std::vector<TestKey>& keys)
{
    std::vector<std::int64_t> times;
    std::vector<float> values, data;
    std::vector<std::int32_t> flags, counts;
    for (const TestKey& key : keys)
    {
        times.push_back(Ticks(key.seconds));
        values.push_back(key.value);
        flags.push_back(key.flags);
        data.insert(data.end(), {key.right_slope, key.next_left_slope, 0.0F, 0.0F});
        counts.push_back(1);
    }
    return {"AnimationCurve",
            {id, Name{"", "AnimCurve"}, std::string()},
            {{"KeyTime", {times}, {}},
             {"KeyValueFloat", {values}, {}},
             {"KeyAttrFlags", {flags}, {}},
             {"KeyAttrDataFloat", {data}, {}},
             {"KeyAttrRefCount", {counts}, {}}}};
}

std::vector<Node> Scene(const std::vector<Node>& settings, const std::vector<Node>& objects,
                        const std::vector<Node>& connections)
{
    return {{"GlobalSettings", {}, {Properties(settings)}},
            {"Objects", {}, objects},
            {"Connections", {}, connections}};
}

namespace
{

struct Link
{
    std::int64_t source, target;
    const char* property = nullptr; // of the target; null: the target itself
};

std::vector<Node> Connections(std::initializer_list<Link> links)
{
    std::vector<Node> nodes;
    for (const auto& [source, target, property] : links)
        nodes.push_back(property ? ToProperty(source, target, property) : Child(source, target));
    return nodes;
}

std::vector<Node> RichModels()
{
    return {
        Object("NodeAttribute", 10, "", "Camera",
               {P("FieldOfView", "FieldOfView", "A", {40.0}), P("NearPlane", "double", "", {1.0}),
                P("ApertureMode", "enum", "", {1}), P("Roll", "Roll", "A", {0.0})}),
        Object("NodeAttribute", 11, "", "CameraSwitcher", {P("Camera Index", "Integer", "A", {0})}),
        Object("Model", 1, "ns:Hips", "LimbNode",
               {P("Lcl Translation", "Lcl Translation", "A", {1.0, 2.0, 3.0}),
                P("Lcl Rotation", "Lcl Rotation", "A", {0.0, 90.0, 0.0}),
                P("Lcl Scaling", "Lcl Scaling", "A", {2.0, 1.0, 1.0}), P("RotationActive", "bool", "", {1}),
                P("PreRotation", "Vector3D", "", {10.0, 0.0, 0.0}),
                P("ScalingPivot", "Vector3D", "", {1.0, 0.0, 0.0}), P("truth", "Bool", "AU", {1}),
                P("whole", "Integer", "AU", {-7}), P("number", "Number", "AU", {2.5}),
                P("text", "KString", "U", {std::string("a \"b\"")}),
                P("choice", "Enum", "AU", {1, std::string("Idle~Walk~Run")}),
                P("vector", "Vector", "AU", {1.0, 2.0, 3.0}), P("colour", "Color", "AU", {0.25, 0.5, 0.75}),
                P("rgba", "ColorAndAlpha", "AU", {0.25, 0.5, 0.75, 0.5}), P("odd", "Blob", "U", {3})}),
        Object("Model", 2, "Camera", "Camera",
               {P("Lcl Translation", "Lcl Translation", "A", {0.0, 0.0, 10.0})}),
        Object("Model", 3, "Target", "Null", {P("InheritType", "enum", "", {0})}),
        Object("Model", 4, "Camera Switcher", "CameraSwitcher", {}),
        Object("Model", 5, "Producer Front", "Camera",
               {P("Lcl Translation", "Lcl Translation", "A", {0.0, 9.0, 0.0})}),
        Object("Constraint", 6, "Hold", "Parent-Child", {P("Active", "bool", "", {0})}),
    };
}

std::vector<Node> RichAnimation()
{
    constexpr std::int32_t kCubicAuto = 0x108, kCubicUser = 0x408, kHold = 2;
    return {
        Object("AnimationStack", 20, "Run", "",
               {P("LocalStart", "KTime", "", {Ticks(0.5)}), P("LocalStop", "KTime", "", {Ticks(2.0)})}),
        Object("AnimationStack", 21, "Still", "", {P("LocalStop", "KTime", "", {Ticks(1.0)})}),
        Object("AnimationLayer", 30, "Base", "", {}),
        Object("AnimationLayer", 31, "Upper", "", {P("Weight", "Number", "A", {50.0})}),
        Object(
            "AnimationCurveNode", 40, "T", "",
            {P("d|X", "Number", "A", {1.0}), P("d|Y", "Number", "A", {2.0}), P("d|Z", "Number", "A", {3.0})}),
        Object("AnimationCurveNode", 41, "T", "", {}),
        Object("AnimationCurveNode", 42, "number", "", {P("d|number", "Number", "A", {2.5})}),
        Object("AnimationCurveNode", 43, "FieldOfView", "", {}),
        Object("AnimationCurveNode", 44, "Camera Index", "", {}),
        CurveObject(
            50, {{0.5, 0.0F, kCubicUser, 10.0F, 0.0F}, {1.0, 10.0F, kCubicAuto}, {2.0, 5.0F, kCubicAuto}}),
        CurveObject(51, {{0.0, 0.0F}, {2.0, 4.0F}}),
        CurveObject(52, {{0.5, 1.0F, kHold}, {1.5, 3.0F, kHold}}),
        CurveObject(53, {{0.5, 40.0F}, {1.5, 60.0F}}),
        CurveObject(54, {{0.5, 0.0F, kHold}, {1.0, 1.0F, kHold}}),
    };
}

} // namespace

std::vector<Node> RichScene()
{
    std::vector<Node> objects = RichModels();
    for (Node& node : RichAnimation())
        objects.push_back(std::move(node));
    const std::vector<Node> connections = Connections({{1, 0},
                                                       {2, 1},
                                                       {3, 0},
                                                       {10, 2},
                                                       {11, 4},
                                                       {3, 2, "LookAtProperty"},
                                                       {30, 20},
                                                       {31, 20},
                                                       {40, 30},
                                                       {41, 31},
                                                       {42, 30},
                                                       {43, 30},
                                                       {44, 30},
                                                       {40, 1, "Lcl Translation"},
                                                       {41, 1, "Lcl Translation"},
                                                       {42, 1, "number"},
                                                       {43, 10, "FieldOfView"},
                                                       {44, 11, "Camera Index"},
                                                       {50, 40, "d|X"},
                                                       {51, 41, "d|Y"},
                                                       {52, 42, "d|number"},
                                                       {53, 43, "d|FieldOfView"},
                                                       {54, 44, "d|Camera Index"}});
    return Scene({P("TimeMode", "enum", "", {11}), P("UnitScaleFactor", "double", "", {1.0})}, objects,
                 connections);
}

namespace
{

Node Property60(const std::string& name, const std::string& kind, const std::string& flags,
                std::vector<Value> values)
{
    std::vector<Value> all{name, kind, flags};
    all.insert(all.end(), values.begin(), values.end());
    return {"Property", all, {}};
}

Node Channel(const std::string& name, std::vector<Node> children)
{
    return {"Channel", {name}, std::move(children)};
}

Node Keys(const std::string& name, std::int32_t count, std::vector<Value> values)
{
    return Channel(name, {{"Default", {0.0}, {}},
                          {"KeyVer", {4005}, {}},
                          {"KeyCount", {count}, {}},
                          {"Key", std::move(values), {}}});
}

Node Model60(const std::string& name, const std::string& type, std::vector<Node> rows)
{
    return {"Model", {Name{name, "Model"}, type}, {{"Properties60", {}, std::move(rows)}}};
}

Node Connect(const std::string& source, const std::string& target)
{
    return {"Connect", {std::string("OO"), Name{source, "Model"}, Name{target, "Model"}}, {}};
}

} // namespace

std::vector<Node> NamedScene()
{
    const Letter constant{'C'}, linear{'L'}, cubic{'U'}, user{'s'}, automatic{'a'}, next{'n'}, none{'n'};
    const std::vector<Node> objects{
        Model60("Hips", "Limb",
                {Property60("Lcl Translation", "Lcl Translation", "A+", {1.0, 2.0, 3.0}),
                 Property60("Lcl Rotation", "Lcl Rotation", "A+", {0.0, 0.0, 0.0}),
                 Property60("Lcl Scaling", "Lcl Scaling", "A+", {1.0, 1.0, 1.0}),
                 Property60("grip", "Number", "A+U", {0.5})}),
        Model60("Eye", "Camera",
                {Property60("Lcl Translation", "Lcl Translation", "A+", {0.0, 0.0, 10.0}),
                 Property60("FieldOfView", "FieldOfView", "A", {40.0}),
                 Property60("ApertureMode", "enum", "", {1})}),
    };
    const Node transform = Channel(
        "Transform",
        {Channel("T", {Keys("X", 3,
                            {Ticks(0.0), 0.0, cubic, user, 10.0, 0.0, none, Ticks(1.0), 10.0, cubic,
                             automatic, none, Ticks(2.0), 5.0, cubic, automatic, none}),
                       Keys("Y", 2, {Ticks(0.0), 0.0, linear, Ticks(2.0), 4.0, linear}),
                       Channel("Z", {{"Default", {7.0}, {}}})}),
         Channel("R", {Keys("X", 2, {Ticks(0.0), 0.0, constant, next, Ticks(1.0), 90.0, constant, next})})});
    const Node take{"Take",
                    {std::string("Walk")},
                    {{"LocalTime", {Ticks(0.0), Ticks(2.0)}, {}},
                     {"Model",
                      {Name{"Hips", "Model"}},
                      {transform, Keys("grip", 2, {Ticks(0.0), 0.0, linear, Ticks(2.0), 1.0, linear})}}}};
    return {{"Objects", {}, objects},
            {"Connections", {}, {Connect("Hips", "Scene"), Connect("Eye", "Hips")}},
            {"Version5", {}, {{"Settings", {}, {{"FrameRate", {std::string("25")}, {}}}}}},
            {"Takes", {}, {{"Current", {std::string("Walk")}, {}}, take}}};
}

} // namespace fbx_writer
