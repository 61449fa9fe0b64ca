#include "tests/gltf/converted.h"

#include "tests/support/memory_file.h"
#include "tev2_loader/file.h"

#include <gtest/gtest.h>

namespace tv2_tests
{

using namespace TEV2_LOADER;

namespace
{

class NoFiles : public gltf::SideFiles
{
public:
    std::string Read(const std::string& path, std::size_t) override
    {
        throw gltf::Error("there is no " + path);
    }
};

} // namespace

FromDocument::FromDocument(std::string glb, tev2_gltf::FromGltfOptions options)
{
    NoFiles files;
    gltf::Document document(glb, files);
    tev2_gltf::FromGltf from(document, std::move(options), report);
    for (std::size_t i = 0; i < from.SceneCount(); ++i)
    {
        scenes.push_back(from.MakeScene(i));
        names.emplace_back(from.SceneName(i));
    }
    for (const tev2_gltf::InsideImage& image : from.InsideImages())
        image_names.push_back(image.file_name);
}

std::set<std::string> CodesOf(const tev2_gltf::ConversionReport& report)
{
    std::set<std::string> codes;
    for (const tev2_gltf::ReportEntry& entry : report.Entries())
        codes.emplace(tev2_gltf::NameOf(entry.code));
    return codes;
}

std::unique_ptr<TEV2> Reloaded(const TEV2& scene)
{
    MemoryFile file(std::size_t{1} << 16);
    TEV2_FILE_WRITER writer = WriterInto(file);
    EXPECT_TRUE(scene.Save(writer));
    EXPECT_TRUE(writer.stream->Flush());
    auto loaded = std::make_unique<TEV2>();
    TEV2_LOAD_REPORT report;
    LoadOptions options;
    options.report = &report;
    EXPECT_TRUE(LoadMemory(file.bytes.data(), file.bytes.size(), *loaded, options));
    for (const TEV2_LOAD_FINDING& finding : report.findings)
        ADD_FAILURE() << FindingText(finding);
    return loaded;
}

} // namespace tv2_tests
