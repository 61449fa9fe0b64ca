#include "gltf/convert/from_gltf.h"
#include "gltf/convert/to_gltf.h"
#include "tests/support/memory_file.h"
#include "tev2_loader/file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

// Scenes from glTF and to glTF. Whatever the bytes are, they are refused with a cause or become a scene that saves,
// loads without a finding and is saved as the same bytes. Whatever a scene is, it is refused with a cause or becomes a
// document that becomes a scene again.

using namespace TEV2_LOADER;

namespace
{

constexpr std::size_t kMostScenes = 2;

class NoFiles : public gltf::SideFiles
{
public:
    std::string Read(const std::string&, std::size_t) override { throw gltf::Error("there are no files"); }
};

void Save(const TEV2& scene, tv2_tests::MemoryFile& file)
{
    file.Clear();
    TEV2_FILE_WRITER writer = tv2_tests::WriterInto(file);
    if (!scene.Save(writer) || !writer.stream->Flush() || writer.stream->lastError != 0)
        __builtin_trap();
    writer.stream->handle = nullptr; // it stays open for the next one
}

void ExpectSavesAndLoads(const TEV2& scene)
{
    static tv2_tests::MemoryFile first(std::size_t{1} << 16);
    static tv2_tests::MemoryFile second(std::size_t{1} << 16);
    Save(scene, first);
    TEV2 loaded;
    TEV2_LOAD_REPORT report;
    LoadOptions options;
    options.report = &report;
    if (!LoadMemory(first.bytes.data(), first.bytes.size(), loaded, options) || !report.findings.empty())
        __builtin_trap();
    Save(loaded, second);
    if (first.bytes != second.bytes)
        __builtin_trap();
}

/// The GLB; empty where the scene is refused.
std::string ToGlb(const TEV2& scene)
{
    constexpr std::size_t kMostBytes = std::size_t{16} << 20;
    gltf::DocumentBuilder builder(kMostBytes);
    tev2_gltf::ConversionReport report;
    const tev2_gltf::GltfSource sources[] = {{scene, "fuzz"}};
    if (const Status converted = tev2_gltf::ToGltf(sources, {}, builder, report); !converted)
    {
        if (converted.Reason().empty())
            __builtin_trap();
        return {};
    }
    return builder.Glb();
}

template <typename Use>
void FromBytes(const std::string& bytes, const Use& use)
{
    NoFiles files;
    gltf::Document document(bytes, files);
    tev2_gltf::ConversionReport report;
    tev2_gltf::FromGltf from(document, {}, report);
    for (std::size_t i = 0; i < std::min(from.SceneCount(), kMostScenes); ++i)
        use(*from.MakeScene(i));
    from.InsideImages();
}

/// To glTF, and from what came out, which cannot be refused.
void ExpectComesBack(const TEV2& scene)
{
    const std::string glb = ToGlb(scene);
    if (glb.empty())
        return;
    try
    {
        FromBytes(glb, ExpectSavesAndLoads);
    }
    catch (const gltf::Error& error)
    {
        std::fprintf(stderr, "what was written is refused: %s\n", error.what());
        __builtin_trap();
    }
}

bool IsTev2(const std::uint8_t* data, std::size_t size)
{
    return size >= sizeof kMagic && std::memcmp(data, &kMagic, sizeof kMagic) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (IsTev2(data, size))
    {
        TEV2 scene;
        if (LoadMemory(data, size, scene))
            ExpectComesBack(scene);
        return 0;
    }
    try
    {
        FromBytes({reinterpret_cast<const char*>(data), size},
                  [](const TEV2& scene)
                  {
                      ExpectSavesAndLoads(scene);
                      ExpectComesBack(scene);
                  });
    }
    catch (const gltf::Error& error)
    {
        if (*error.what() == '\0')
            __builtin_trap();
    }
    return 0;
}
