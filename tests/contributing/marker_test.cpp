// Saves and loads the example record of CONTRIBUTING.md, in a library that build_record.py made from that text.
//     marker_test FILE

#include "tev2_loader/file.h"
#include "tev2_loader/names.h"
#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/walk.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

using namespace TEV2_LOADER;

namespace
{

int Fail(const char* what)
{
    std::fprintf(stderr, "failed: %s\n", what);
    return 1;
}

class Paths : public TEV2_FIELD_VISITOR
{
public:
    void Text(const TEV2_FIELD& field, const TEV2_WIDE_STRING&) override { Add(field); }
    void Number(const TEV2_FIELD& field, double) override { Add(field); }
    void Track(const TEV2_FIELD& field, const TEV2_ANIMATABLE*) override { Add(field); }

    std::string markers;

private:
    void Add(const TEV2_FIELD& field)
    {
        if (field.chunkId == kMarkerChunk)
            markers += field.Path() + " " + std::to_string(field.offset - field.chunkOffset) + "\n";
    }
};

// clang-format off
constexpr std::string_view kChunk{"\x48\0\0\0" "\x18\0\0\0"          // 72 bytes of chunk 24
                                  "\4\0d\0o\0o\0r\0"                 // name
                                  "\1\0YL"                           // layout
                                  "\2\0h\0i\0" "\7\0\0\0"           // note, node
                                  "\1\0\0\0" "\0\0\0\0"             // a track, of kind 0
                                  "\0\0\0\0" "\0\0\0\0"             // its cursor and present time
                                  "\2\0\0\0" "\0\0\0\0" "\0\0\0\x40"   // times 0 and 2
                                  "\2\0\0\0" "\0\0\0\0" "\0\0\x80\x3F", // values 0 and 1
                                  72};
constexpr std::size_t kLayoutAt = 18;
// clang-format on

std::string ReadAll(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A body of another layout comes out of a save as it went in.
int KeepForeignBody(std::string bytes, const std::string& path)
{
    bytes[bytes.find(kChunk) + kLayoutAt] = '\2';
    TEV2 scene;
    TEV2_LOAD_REPORT report;
    if (!LoadMemory(bytes.data(), bytes.size(), scene, {.report = &report}))
        return Fail("loading another layout");
    if (report.findings.size() != 1 || report.findings[0].code != TEV2_LOAD_CODE::BodyKept)
        return Fail("the warning");
    if (scene.markers.size() != 1 || scene.markers[0]->IsTyped())
        return Fail("keeping the body");
    if (!SaveFile(scene, path) || ReadAll(path) != bytes)
        return Fail("saving the body that was kept");
    return 0;
}

} // namespace

int main(int /*count*/, char** arguments)
{
    const std::string path = arguments[1];
    TEV2 made;
    made.markers.push_back(std::make_unique<TEV2_MARKER>());
    TEV2_MARKER& marker = *made.markers.back();
    marker.name = TEV2_WIDE_STRING(u"door");
    marker.note = TEV2_WIDE_STRING(u"hi");
    marker.node = 7;
    auto weight = std::make_unique<TEV2_ANIMATABLE_FLOAT32_LINEAR>();
    weight->Append(0.0f, 0.0f);
    weight->Append(2.0f, 1.0f);
    marker.weight = std::move(weight);
    if (!SaveFile(made, path))
        return Fail("saving");

    const std::string bytes = ReadAll(path);
    if (bytes.find(kChunk) == std::string::npos)
        return Fail("the bytes of the chunk");

    TEV2 loaded;
    TEV2_LOAD_REPORT report;
    if (const Status status = LoadFile(path, loaded, {.report = &report}); !status)
        return Fail(status.Reason().c_str());
    if (loaded.markers.size() != 1 || loaded.markers[0]->node != 7 || !report.findings.empty())
        return Fail("loading");
    loaded.SetTime(1.0f);
    if (loaded.markers[0]->weight->GetValue() != 0.5f)
        return Fail("evaluating");

    Paths paths;
    WalkScene(loaded, reinterpret_cast<const std::uint8_t*>(bytes.data()), report, paths);
    if (paths.markers != "markers[0].name 8\nmarkers[0].note 22\nmarkers[0].node 28\nmarkers[0].weight 32\n")
        return Fail(paths.markers.c_str());
    return KeepForeignBody(bytes, path);
}
