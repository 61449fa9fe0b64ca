#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

// Writes FBX files for tests, from one description binary or as text.
namespace fbx_writer
{

struct Name // "ns:Hips" of the class "Model": the two are joined differently in binary and text files
{
    std::string name;
    std::string kind;
};

struct Letter // of a list of keys
{
    char letter;
};

using Value =
    std::variant<Letter, std::int32_t, std::int64_t, double, std::string, Name, std::vector<std::int32_t>,
                 std::vector<std::int64_t>, std::vector<float>, std::vector<double>>;

struct Node
{
    std::string name;
    std::vector<Value> values;
    std::vector<Node> children;
};

inline std::int64_t Ticks(double seconds)
{
    return static_cast<std::int64_t>(seconds * 46186158000.0);
}

// Arrays are deflated on demand. From version 7500 on headers are wide.
std::string Binary(unsigned version, const std::vector<Node>& nodes, bool deflate = false);
std::string Text(unsigned version, const std::vector<Node>& nodes);

// ---- pieces of 7.x scenes

// A row of Properties70.
inline Node P(const std::string& name, const std::string& kind, const std::string& flags,
              std::vector<Value> values)
{
    std::vector<Value> all{name, kind, std::string(), flags};
    all.insert(all.end(), values.begin(), values.end());
    return {"P", all, {}};
}
inline Node Properties(std::vector<Node> rows)
{
    return {"Properties70", {}, std::move(rows)};
}
inline Node Object(const std::string& kind, std::int64_t id, const std::string& name, const std::string& type,
                   std::vector<Node> rows)
{
    return {kind, {id, Name{name, kind}, type}, {Properties(std::move(rows))}};
}
inline Node Child(std::int64_t source, std::int64_t target)
{
    return {"C", {std::string("OO"), source, target}, {}};
}
inline Node ToProperty(std::int64_t source, std::int64_t target, const std::string& property)
{
    return {"C", {std::string("OP"), source, target, property}, {}};
}

struct TestKey
{
    double seconds;
    float value;
    std::int32_t flags = 4; // straight
    float right_slope = 0.0F;
    float next_left_slope = 0.0F;
};
Node CurveObject(std::int64_t id, const std::vector<TestKey>& keys);

// The sections of a whole 7.x file.
std::vector<Node> Scene(const std::vector<Node>& settings, const std::vector<Node>& objects,
                        const std::vector<Node>& connections);

// A small scene with everything: a turned model with user properties of all kinds, a camera with lens and interest, a
// switcher, two layers, curves of every interpolation, two takes.
std::vector<Node> RichScene();

// The same idea in the records of 6.x.
std::vector<Node> NamedScene();

} // namespace fbx_writer
