#pragma once

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace mobu_host
{

// A custom property as the scene file states it. Four numbers are taken for a colour with alpha, the one kind
// of four numbers that an export carries.
struct SourceProperty
{
    using Value = std::variant<bool, int, double, std::string, std::array<double, 3>, std::array<double, 4>>;

    std::string name;
    Value value;
};

// A camera's lens. Distances in the file's unit.
struct SourceLens
{
    bool orthographic = false;
    double horizontal_angle = 0.0; // radians; 0 where the file states none
    double aspect = 0.0;           // width / height; 0 where the file states none
    double near_plane = 0.0;
    double far_plane = 0.0; // 0 where the file states none
};

// What a scene file says about one node besides its place and motion.
struct SourceNode
{
    std::string name;
    bool has_geometry = false;
    std::vector<SourceProperty> properties;
    std::optional<SourceLens> lens;
};

} // namespace mobu_host
