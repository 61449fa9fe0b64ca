#pragma once

#include <string>

// Small scene files as text.

namespace tv2_tests
{

inline std::string Repeated(const std::string& text, std::size_t times)
{
    std::string all;
    for (std::size_t i = 0; i < times; ++i)
        all += text;
    return all;
}

/// "0, 1, 2", each between two texts.
inline std::string Numbered(std::size_t count, const std::string& before = "", const std::string& after = "")
{
    std::string all;
    for (std::size_t i = 0; i < count; ++i)
        all += (i == 0 ? before : "," + before) + std::to_string(i) + after;
    return all;
}

/// A BVH file: the text between the outer braces of its root "a", and its motion from "Frames:" on.
inline std::string BvhText(const std::string& joints, const std::string& motion)
{
    return "HIERARCHY\nROOT a\n{\n" + joints + "}\nMOTION\n" + motion;
}

/// A BVH file of one joint with an end site.
inline std::string OneJointBvh(const std::string& offset, const std::string& channels,
                               const std::string& motion)
{
    return BvhText("OFFSET " + offset + "\nCHANNELS " + channels + "\nEnd Site\n{\nOFFSET 0 100 0\n}\n",
                   motion);
}

inline constexpr const char* kTwoJoints =
    R"(HIERARCHY ROOT Hips { OFFSET 0 0 0 CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation
JOINT ns:Leg { OFFSET 1 2 3 CHANNELS 3 Zrotation Xrotation Yrotation End Site { OFFSET 0 -5 0 } } }
MOTION Frames: 3 Frame Time: 0.04
0 0 0 0 0 0 0 0 0
1 2 3 90 0 0 0 0 0
3 2 3 90 0 0 0 90 0
)";

// Takes "A b", "A_b" and "C" of 0 s, and a camera with a custom property.
inline constexpr const char* kThreeTakes = R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[0]}],
"nodes":[{"name":"Eye","camera":0,"extras":{"note":"left","weight":0.5}}],
"cameras":[{"type":"perspective","perspective":{"yfov":0.8,"aspectRatio":1,"znear":0.1,"zfar":10}}],
"animations":[{"name":"A b","channels":[],"samplers":[]},{"name":"A_b","channels":[],"samplers":[]},
{"name":"C","channels":[],"samplers":[]}]})";

// One moving node, whose keys are in a file of 32 bytes.
inline constexpr const char* kKeysInAFile = R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[0]}],
"nodes":[{"name":"Box"}],"buffers":[{"uri":"keys.tv2","byteLength":32}],
"bufferViews":[{"buffer":0,"byteLength":4},{"buffer":0,"byteOffset":4,"byteLength":12}],
"accessors":[{"bufferView":0,"componentType":5126,"count":1,"type":"SCALAR","min":[0],"max":[0]},
{"bufferView":1,"componentType":5126,"count":1,"type":"VEC3"}],
"animations":[{"name":"A","samplers":[{"input":0,"output":1}],
"channels":[{"sampler":0,"target":{"node":0,"path":"translation"}}]}]})";

} // namespace tv2_tests
