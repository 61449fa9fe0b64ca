#include "host/import/base/parse_error.h"
#include "host/import/formats.h"
#include "host/import/host_scene.h"
#include "tests/host/import/builders/collada_text.h"
#include "tests/host/import/builders/fbx_writer.h"
#include "tests/host/import/builders/gltf_writer.h"
#include "tests/host/import/import_fixture.h"

#include <cstdlib>
#include <ostream>

namespace
{

// A sound file that has most of what its format has, in few bytes.
struct SoundFile
{
    const char* name;
    const char* format;
    std::string (*bytes)();
    bool opens_when_cut; // a text that ends early may be sound
};

void PrintTo(const SoundFile& file, std::ostream* out)
{
    *out << file.name;
}

std::string Bvh()
{
    return "HIERARCHY\nROOT Hips\n{\n  OFFSET 0 1.5 -2e1\n"
           "  CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation\n"
           "  JOINT Left Leg\n  {\n    OFFSET 10 0 0\n    CHANNELS 3 Zrotation Xrotation Yrotation\n"
           "    End Site\n    {\n      OFFSET 0 -80 0\n    }\n  }\n}\nROOT Prop\n{\n  CHANNELS 1 "
           "Xposition\n}\n"
           "MOTION\nFrames: 3\nFrame Time: .0083333\n"
           "0 90 0 0 0 0 10 20 30 1\n1 90 2 -45 10 5 10 25 30 2\n2 91.25 4 -90 20 10 10 30 30 3\n";
}

gltf_writer::Document Gltf()
{
    gltf_writer::Document document;
    document.json["cameras"] = {
        {{"type", "perspective"}, {"perspective", {{"yfov", 0.8}, {"aspectRatio", 1.5}, {"znear", 0.1}}}}};
    document.Node({{"name", "Hips"}, {"children", {1}}, {"extras", {{"on", true}, {"tint", {1, 2, 3, 4}}}}})
        .Node({{"name", "Eye"}, {"camera", 0}, {"matrix", {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 5, 6, 7, 1}}},
              false)
        .Animation({{"name", "Go"}})
        .Channel(0, "translation", {0, 0, 0, 1, 2, 3, 0, 0, 0, 0, 0, 0, 4, 5, 6, 0, 0, 0}, "CUBICSPLINE")
        .Channel(0, "scale", {1, 1, 1, 2, 1, -1}, "STEP")
        .Channel(1, "rotation", {0, 0, 0, 1, 0, 0.6f, 0, 0.8f});
    return document;
}

constexpr SoundFile kFiles[] = {
    {"BinaryFbx", "FBX", [] { return fbx_writer::Binary(7400, fbx_writer::RichScene(), true); }, false},
    {"WideBinaryFbx", "FBX", [] { return fbx_writer::Binary(7700, fbx_writer::RichScene()); }, false},
    {"NamedBinaryFbx", "FBX", [] { return fbx_writer::Binary(6100, fbx_writer::NamedScene()); }, false},
    {"TextFbx", "FBX", [] { return fbx_writer::Text(7400, fbx_writer::RichScene()); }, true},
    {"NamedTextFbx", "FBX", [] { return fbx_writer::Text(6100, fbx_writer::NamedScene()); }, true},
    {"Bvh", "BVH", Bvh, true},
    {"TextGltf", "glTF", [] { return Gltf().Text(); }, false},
    {"BinaryGltf", "glTF", [] { return Gltf().Binary(); }, false},
    {"Collada", "Collada", collada_text::RichDocument, false},
    {"WideCollada", "Collada", [] { return collada_text::Utf16(collada_text::RichDocument(), true); }, false},
};

// Every way to cut or bend a byte of a sound file ends in a scene or in one line that says why not.
class DamageSweepTest : public SceneImportTest, public testing::WithParamInterface<SoundFile>
{
protected:
    // A fixed share, unless all is asked for.
    static std::size_t Stride()
    {
        const char* sweep = std::getenv("TV2_SWEEP");
        return sweep != nullptr && std::string_view(sweep) == "all" ? 1 : 7;
    }

    bool Open(const std::string& bytes) const
    {
        try
        {
            mobu_host::ImportNotes notes;
            const mobu_host::SceneFile file{(folder_ / "scene").string(), bytes};
            mobu_host::BuildHostScene(mobu_host::FormatNamed(GetParam().format)->read(file, {}, notes), {},
                                      notes);
        }
        catch (const mobu_host::ParseError& error)
        {
            const std::string cause = error.what();
            EXPECT_FALSE(cause.empty());
            EXPECT_EQ(cause.find('\n'), std::string::npos) << cause;
            return false;
        }
        for (const double seconds : {-1.0, 0.6, 1.7})
            Goto(seconds);
        return true;
    }
};

TEST_P(DamageSweepTest, SoundOnesOpen)
{
    EXPECT_TRUE(Open(GetParam().bytes()));
}

TEST_P(DamageSweepTest, Truncations)
{
    const std::string file = GetParam().bytes();
    for (std::size_t size = 0; size < file.size(); size += Stride())
    {
        SCOPED_TRACE(size);
        const bool opened = Open(file.substr(0, size));
        EXPECT_TRUE(!opened || GetParam().opens_when_cut);
    }
}

TEST_P(DamageSweepTest, Patches)
{
    const std::string file = GetParam().bytes();
    for (std::size_t at = 0; at < file.size(); at += Stride())
    {
        const char byte = file[at];
        for (const char patch :
             {'\0', '\x80', '\xFF', static_cast<char>(byte + 1), static_cast<char>(byte - 1)})
        {
            SCOPED_TRACE(std::to_string(at) + " " + std::to_string(patch));
            std::string bent = file;
            bent[at] = patch;
            Open(bent);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Files, DamageSweepTest, testing::ValuesIn(kFiles),
                         [](const auto& file) { return std::string(file.param.name); });

} // namespace
