#pragma once

// Collada documents for tests, from what a test is about.

#include <string>
#include <vector>

namespace collada_text
{

inline std::string Document(const std::string& libraries, const std::string& nodes,
                            const std::string& asset = R"(<unit meter="0.01"/><up_axis>Y_UP</up_axis>)")
{
    return R"(<?xml version="1.0" encoding="utf-8"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1"><asset>)" +
           asset + "</asset>" + libraries + R"(<library_visual_scenes><visual_scene id="vs">)" + nodes +
           R"(</visual_scene></library_visual_scenes><scene><instance_visual_scene url="#vs"/></scene></COLLADA>)";
}

inline std::size_t WordsIn(const std::string& list)
{
    std::size_t words = 0;
    bool in_word = false;
    for (const char c : list)
    {
        words += c != ' ' && !in_word ? 1 : 0;
        in_word = c != ' ';
    }
    return words;
}

inline std::string Source(const std::string& id, const std::string& numbers, std::size_t stride = 1,
                          const char* array = "float_array")
{
    const std::size_t count = WordsIn(numbers);
    return "<source id=\"" + id + "\"><" + array + " id=\"" + id + "-a\" count=\"" + std::to_string(count) +
           "\">" + numbers + "</" + array + "><technique_common><accessor source=\"#" + id + "-a\" count=\"" +
           std::to_string(count / stride) + "\" stride=\"" + std::to_string(stride) +
           "\"/></technique_common></source>";
}

struct Sampled
{
    std::string target;
    std::string times;
    std::string values;
    std::size_t stride = 1; // of the values
    std::string ways = {};  // INTERPOLATION; tangents only with it
    std::string in = {}, out = {};
    std::size_t tangent_stride = 2;
};

// The inside of an <animation>; ids begin with `id`.
inline std::string Sampler(const std::string& id, const Sampled& s)
{
    std::string sources = Source(id + "i", s.times) + Source(id + "o", s.values, s.stride);
    std::string inputs = "<input semantic=\"INPUT\" source=\"#" + id +
                         "i\"/><input semantic=\"OUTPUT\" source=\"#" + id + "o\"/>";
    const auto add = [&](const char* semantic, const std::string& suffix, const std::string& list,
                         std::size_t stride, const char* array)
    {
        if (list.empty())
            return;
        sources += Source(id + suffix, list, stride, array);
        inputs += std::string("<input semantic=\"") + semantic + "\" source=\"#" + id + suffix + "\"/>";
    };
    add("INTERPOLATION", "w", s.ways, 1, "Name_array");
    add("IN_TANGENT", "it", s.in, s.tangent_stride, "float_array");
    add("OUT_TANGENT", "ot", s.out, s.tangent_stride, "float_array");
    return sources + "<sampler id=\"" + id + "s\">" + inputs + "</sampler><channel source=\"#" + id +
           "s\" target=\"" + s.target + "\"/>";
}

inline std::string Animation(const std::string& id, const Sampled& sampled)
{
    return "<animation id=\"" + id + "\" name=\"" + id + "\">" + Sampler(id, sampled) + "</animation>";
}

inline std::string Animations(const std::string& inside)
{
    return "<library_animations>" + inside + "</library_animations>";
}

// Something of everything that is read, in few bytes.
inline std::string RichDocument()
{
    const std::string cameras =
        R"(<library_cameras><camera id="c"><optics><technique_common><perspective><yfov sid="y">40</yfov>
<aspect_ratio>1.5</aspect_ratio><znear sid="n">1</znear></perspective></technique_common></optics></camera>
<camera id="o"><optics><technique_common><orthographic><xmag>4</xmag><ymag>3</ymag></orthographic></technique_common>
</optics></camera></library_cameras>)";
    const std::string clips = R"(<library_animation_clips><animation_clip name="cut" start=".5" end="2">
<instance_animation url="#a"/><instance_animation url="#d"/></animation_clip></library_animation_clips>)";
    return Document(
        cameras +
            Animations(
                Animation("a", {"hip/t.X", "0 1 2", "0 1 3", 1, "BEZIER STEP LINEAR", "0 0 .5 1 0 0",
                                "1 2 0 0 0 0"}) +
                Animation("b", {"hip/rz.ANGLE", "0 1", "0 90", 1, "HERMITE LINEAR", "3 3", "1 1", 1}) +
                Animation("m", {"m/m", "0 2",
                                "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1 0 -1 0 5 1 0 0 0 0 0 1 0 0 0 0 1", 16}) +
                Animation("d", {"c/y", "0 2", "40 60"})) +
            clips +
            R"(<library_nodes><node id="l"><scale>1 -2 1</scale><instance_geometry url="#g"/></node></library_nodes>)",
        R"(<node id="hip" name="Hip &amp; &#228;" type="JOINT"><translate sid="t">1 2 3</translate>
<rotate sid="rz">0 0 1 20</rotate><skew>30 0 1 0 1 0 0</skew><extra><technique profile="FCOLLADA"><user_properties>a=1
b = .5</user_properties></technique></extra><node id="m" sid="k">
<matrix sid="m">1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix>
<instance_node url="#l"/></node></node><node><lookat>0 0 9 0 0 0 0 1 0</lookat><instance_camera url="#c"/></node>
<node><instance_camera url="#o"/><instance_node url="#l"/></node>)",
        R"(<unit meter="0.0254"/><up_axis>Z_UP</up_axis>)");
}

// UTF-16, for text of one byte a character.
inline std::string Utf16(const std::string& text, bool big_endian, bool mark = true)
{
    std::string wide = !mark ? "" : big_endian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : text)
        wide += big_endian ? std::string({'\0', c}) : std::string({c, '\0'});
    return wide;
}

} // namespace collada_text
