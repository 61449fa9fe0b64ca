#pragma once

// The third layer: what an FBX file says, as models, takes and values over time, apart from any host.

#include "host/import/fbx/document.h"
#include "host/import/fbx/layered_value.h"
#include "host/import/fbx/transform_evaluator.h"
#include "host/import/import_notes.h"

#include <cstdint>
#include <string>
#include <vector>

namespace mobu_host::fbx
{

enum class PropertyKind
{
    Truth,
    Whole,
    Number,
    Text,
    Choice, // of an enumeration
    Vector3,
    Colour,
    ColourAlpha
};

// A user's property.
struct UserProperty
{
    std::string name;
    PropertyKind kind = PropertyKind::Number;
    bool animatable = false;
    Components value{}; // of Truth 0 or 1
    std::string text;
    std::vector<std::string> items;
};

// A value of one of the host's own properties, by its name there.
struct BuiltInValue
{
    const char* property;
    double value;
};

enum class ModelKind
{
    Plain,
    Camera,
    SystemCamera, // hangs on nothing; the host has it already
    Switcher      // likewise
};

struct ModelData
{
    std::string label; // with its namespaces
    ModelKind kind = ModelKind::Plain;
    ObjectIndex object = 0;
    std::vector<UserProperty> user_properties;
    std::vector<BuiltInValue> values;
};

// What moves a property in one take. Of a user's property by its place in the list, else by the host's name.
struct PropertyMotion
{
    std::uint32_t model;
    std::uint32_t user_property; // or kNoNode
    const char* built_in;        // or null
    double unit = 1.0;           // factor on the values
    std::shared_ptr<const LayeredValue> value;
};

struct TakeData
{
    std::string name;
    std::int64_t start = 0; // ticks
    std::int64_t stop = 0;
    std::vector<PropertyMotion> motions;
};

struct ConstraintData
{
    std::string name;
    std::string type;
    bool active = true;
};

struct SceneData
{
    double frames_per_second = 30.0;
    double centimetres = 1.0;      // one unit of length
    std::vector<ModelData> models; // parents before children, children in order; model i is node i of the rig
    Rig rig;                       // with its takes, in the order of `takes`
    std::vector<TakeData> takes;
    std::size_t current_take = 0;
    std::vector<ConstraintData> constraints;
};

// Throws ParseError for what no scene can hold: numbers that are none, times out of all time, models nested too deep.
SceneData ReadScene(const Document& document, ImportNotes& notes);

} // namespace mobu_host::fbx
