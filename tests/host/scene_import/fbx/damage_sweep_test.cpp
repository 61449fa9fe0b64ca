#include "host/scene_import/fbx/fbx_import.h"
#include "tests/host/scene_import/fbx/fbx_writer.h"
#include "tests/host/scene_import/import_fixture.h"

#include <cstdlib>

namespace
{

// Every way to cut or bend a byte of a sound file ends in a scene or in one line that says why not.
class DamageSweepTest : public SceneImportTest, public testing::WithParamInterface<const char*>
{
protected:
    static std::string File()
    {
        const std::string kind = GetParam();
        if (kind == "Binary")
            return fbx_writer::Binary(7400, fbx_writer::RichScene(), true);
        if (kind == "WideBinary")
            return fbx_writer::Binary(7700, fbx_writer::RichScene());
        if (kind == "NamedBinary")
            return fbx_writer::Binary(6100, fbx_writer::NamedScene());
        if (kind == "NamedText")
            return fbx_writer::Text(6100, fbx_writer::NamedScene());
        return fbx_writer::Text(7400, fbx_writer::RichScene());
    }

    // A fixed share, unless all is asked for.
    static std::size_t Stride()
    {
        const char* sweep = std::getenv("TV2_SWEEP");
        return sweep != nullptr && std::string_view(sweep) == "all" ? 1 : 7;
    }

    static bool Open(const std::string& file)
    {
        mobu_host::ImportNotes notes;
        std::string cause;
        const bool ok = mobu_host::fbx::ImportFbx(file, notes, cause);
        EXPECT_EQ(ok, cause.empty()) << cause;
        EXPECT_EQ(cause.find('\n'), std::string::npos) << cause;
        if (ok)
            for (const double seconds : {-1.0, 0.6, 1.7})
                Goto(seconds);
        return ok;
    }
};

TEST_P(DamageSweepTest, SoundOnesOpen)
{
    EXPECT_TRUE(Open(File()));
}

TEST_P(DamageSweepTest, Truncations)
{
    const std::string file = File();
    const bool is_text = std::string(GetParam()).find("Text") != std::string::npos;
    for (std::size_t size = 0; size < file.size(); size += Stride())
    {
        SCOPED_TRACE(size);
        const bool opened = Open(file.substr(0, size));
        EXPECT_TRUE(is_text || !opened);
    }
}

TEST_P(DamageSweepTest, Patches)
{
    const std::string file = File();
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

INSTANTIATE_TEST_SUITE_P(Files, DamageSweepTest,
                         testing::Values("Binary", "WideBinary", "Text", "NamedBinary", "NamedText"),
                         [](const auto& file) { return std::string(file.param); });

} // namespace
