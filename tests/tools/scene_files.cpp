#include "tests/tools/scene_files.h"

#include "tests/tools/command.h"
#include "tev2_loader/io/file_writer.h"

#include <gtest/gtest.h>

#include <bit>
#include <fstream>
#include <iterator>

using namespace TEV2_LOADER;

void FillSoundScene(TEV2& scene)
{
    scene.environment.timeRange = {0.0F, 1.0F};
    scene.information.creatorText = TEV2_WIDE_STRING(u"MotionBuilder v17.00  Tev2 Exporter v1.14");
    scene.information.infoText = TEV2_WIDE_STRING(u"USERNAME:\tann\r\nFBX_FILE:\twalk.bvh\r\n");

    const char* names[] = {"Scene", "Hips", "Camera"};
    for (std::int32_t i = 0; i < 3; ++i)
    {
        TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
        node.name = TEV2_WIDE_STRING::FromBytes(names[i]);
        node.parentIndex = i - 1;
        node.translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(
            {{0.0F, {0.0F, 1.0F, 0.0F}}, {0.5F, {1.0F, 1.0F, 0.0F}}, {1.0F, {0.0F, 1.0F, -2.0F}}});
        node.rotation = MakeTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({{0.0F, {0.0F, 0.0F, 0.0F, 1.0F}},
                                                                     {0.5F, {0.0F, 0.0F, 0.6F, 0.8F}},
                                                                     {1.0F, {0.0F, 0.0F, 0.0F, 1.0F}}});
    }

    TEV2_EXTENDED_PROPERTIES& properties = scene.matrixHierarchy.nodes[1].properties;
    TEV2_NAMED_STRING_ARRAY& texts = properties.stringArrays.emplace_back();
    texts.name = TEV2_WIDE_STRING(u"Quality");
    texts.strings = {TEV2_WIDE_STRING(u"Low"), TEV2_WIDE_STRING(u"High")};
    properties.intValues.emplace_back().name = TEV2_WIDE_STRING(u"Visible");
    properties.intValues[0].track = MakeTrack<TEV2_ANIMATABLE_INT32_RLE>({{0.0F, 1}, {0.5F, -7}});
    properties.floatValues.emplace_back().name = TEV2_WIDE_STRING(u"Blend");
    properties.floatValues[0].track = MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0F, 0.25F}});
    properties.vector3Values.emplace_back().name = TEV2_WIDE_STRING(u"Offset");
    properties.vector3Values[0].track =
        MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0F, {1.0F, 2.0F, 3.0F}}});
    properties.vector4Values.emplace_back().name = TEV2_WIDE_STRING(u"Tint");
    properties.vector4Values[0].track =
        MakeTrack<TEV2_ANIMATABLE_VECTOR_4_LINEAR>({{0.0F, {1.0F, 0.5F, 0.0F, 1.0F}}});

    auto camera = std::make_unique<TEV2_CAMERA>();
    camera->name = TEV2_WIDE_STRING(u"Camera");
    camera->value = 2;
    camera->inverseAspect = 0.75F;
    camera->distance = MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0F, 4.0F}, {0.5F, 4.0F}, {1.0F, 5.0F}});
    camera->fieldOfView =
        MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0F, 0.7F}, {0.5F, 0.7F}, {1.0F, 0.7F}});
    camera->clipRange = MakeTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>(
        {{0.0F, {0.1F, 40.0F}}, {0.5F, {0.1F, 40.0F}}, {1.0F, {0.1F, 40.0F}}});
    scene.cameras.push_back(std::move(camera));
    scene.cameraMan.cameraIndex = MakeTrack<TEV2_ANIMATABLE_INT32_RLE>({{0.0F, 0}, {0.5F, -1}, {1.0F, 0}});
}

void SaveScene(const TEV2& scene, const std::string& path)
{
    TEV2_FILE_WRITER writer(TEV2_WIDE_STRING::FromBytes(path), false, true);
    ASSERT_TRUE(scene.Save(writer));
    ASSERT_EQ(writer.stream->lastError, 0) << path;
}

Bytes ReadBytes(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    EXPECT_TRUE(stream.is_open()) << path;
    return Bytes(std::istreambuf_iterator<char>(stream), {});
}

void WriteBytes(const std::string& path, const Bytes& bytes)
{
    std::ofstream stream(path, std::ios::binary);
    std::copy(bytes.begin(), bytes.end(), std::ostreambuf_iterator<char>(stream));
    ASSERT_TRUE(stream.flush()) << path;
}

Bytes SoundImage()
{
    const ScratchFolder folder;
    TEV2 scene;
    FillSoundScene(scene);
    SaveScene(scene, folder.Path("sound.tv2"));
    return ReadBytes(folder.Path("sound.tv2"));
}

void AppendWord(Bytes& bytes, std::uint32_t word)
{
    for (int shift = 0; shift < 32; shift += 8)
    {
        bytes.push_back(static_cast<std::uint8_t>(word >> shift));
    }
}

std::uint32_t WordAt(const Bytes& bytes, std::size_t offset)
{
    std::uint32_t word = 0;
    EXPECT_LE(offset + 4, bytes.size());
    for (std::size_t i = 0; i < 4 && offset + i < bytes.size(); ++i)
    {
        word |= static_cast<std::uint32_t>(bytes[offset + i]) << (8 * i);
    }
    return word;
}

Bytes Chunk(std::uint32_t id, std::initializer_list<std::uint32_t> words)
{
    Bytes chunk;
    AppendWord(chunk, static_cast<std::uint32_t>(8 + 4 * words.size()));
    AppendWord(chunk, id);
    for (const std::uint32_t word : words)
    {
        AppendWord(chunk, word);
    }
    return chunk;
}

Bytes Join(std::initializer_list<Bytes> parts)
{
    Bytes joined;
    for (const Bytes& part : parts)
    {
        joined.insert(joined.end(), part.begin(), part.end());
    }
    return joined;
}

Bytes Magic()
{
    return {0x01, 0x32, 0x56, 0x54};
}

std::uint32_t Bits(float value)
{
    return std::bit_cast<std::uint32_t>(value);
}
