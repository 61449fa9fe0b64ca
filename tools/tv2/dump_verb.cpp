// tv2 dump: everything in a file, value by value.

#include "tools/tv2/dump_writer.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/names.h"
#include "tools/tv2/verb.h"

#include <limits>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

struct DumpOptions
{
    std::string file;
    std::size_t keys = std::numeric_limits<std::size_t>::max();
};

class SceneDump
{
public:
    SceneDump(const LoadedFile& file, DumpWriter& writer) : file_(file), scene_(*file.scene), writer_(writer)
    {
    }

    void Write()
    {
        writer_.BeginObject(file_.title);
        writer_.Text("file", file_.argument);
        if (!IsUtf8(file_.argument))
        {
            writer_.Text("fileBytes", PercentEncoded(file_.argument));
        }
        writer_.Integer("bytes", static_cast<std::int64_t>(file_.image.size()));
        Chunks();
        Information();
        ArrayLengths();
        Environment();
        Body("globalLightTint", scene_.globalLightTint.get());
        Body("ambientLight", scene_.ambientLight.get());
        writer_.BeginObject("cameraMan");
        writer_.Track("cameraIndex", scene_.cameraMan.cameraIndex.get());
        writer_.EndObject();
        TypedBodies("lights", scene_.lights);
        Array("cameras", scene_.cameras, [this](const TEV2_CAMERA& camera) { Camera(camera); });
        Bodies("rigids", scene_.rigids);
        Bodies("animMeshes", scene_.animMeshes);
        Bodies("morphMeshes", scene_.morphMeshes);
        Bodies("weightedMeshes", scene_.weightedMeshes);
        Bodies("bezierSplines", scene_.bezierSplines);
        Bodies("helpers", scene_.helpers);
        Bodies("speedTreeReferences", scene_.speedTreeReferences);
        MatrixHierarchy();
        TypedBodies("materials", scene_.materials);
        writer_.BeginArray("instanceLists", scene_.instanceLists.size());
        for (const auto& list : scene_.instanceLists)
        {
            Bodies({}, list);
        }
        writer_.EndArray();
        Bodies("xrefs15", scene_.xrefs15);
        Bodies("xrefs20", scene_.xrefs20);
        Bodies("xrefObjects", scene_.xrefObjects);
        writer_.EndObject();
    }

private:
    void Chunks()
    {
        writer_.BeginArray("chunks", file_.report.chunks.size());
        for (const TEV2_CHUNK_SPAN& chunk : file_.report.chunks)
        {
            writer_.BeginObject({});
            writer_.Integer("id", chunk.id);
            writer_.Text("holds", ChunkTitle(chunk.id));
            writer_.Integer("offset", static_cast<std::int64_t>(chunk.offset));
            writer_.Integer("size", chunk.size);
            writer_.EndObject();
        }
        writer_.EndArray();
    }

    void Information()
    {
        writer_.BeginObject("information");
        writer_.Float("version", scene_.information.version);
        writer_.String("creatorText", scene_.information.creatorText);
        writer_.String("infoText", scene_.information.infoText);
        writer_.EndObject();
    }

    void ArrayLengths()
    {
        const auto lengths = AnnouncedLengths(file_);
        if (!lengths)
        {
            writer_.Absent("arrayLengths");
            return;
        }
        writer_.BeginArray("arrayLengths", lengths->counts.size());
        for (const std::uint32_t count : lengths->counts)
        {
            writer_.Integer({}, count);
        }
        writer_.EndArray();
    }

    void Environment()
    {
        writer_.BeginObject("environment");
        writer_.BeginObject("timeRange");
        writer_.Float("minimum", scene_.environment.timeRange.minimum);
        writer_.Float("maximum", scene_.environment.timeRange.maximum);
        writer_.EndObject();
        writer_.Track("environmentColour", scene_.environment.environmentColour.get());
        writer_.Bytes("reserved", scene_.environment.reserved);
        writer_.EndObject();
    }

    void Camera(const TEV2_CAMERA& camera)
    {
        writer_.String("name", camera.name);
        writer_.String("secondText", camera.secondText);
        writer_.String("thirdText", camera.thirdText);
        writer_.Integer("value", camera.value);
        Properties(camera.properties);
        writer_.Track("bounds", camera.bounds.get());
        writer_.Float("inverseAspect", camera.inverseAspect);
        writer_.Track("distance", camera.distance.get());
        writer_.Track("fieldOfView", camera.fieldOfView.get());
        writer_.Track("secondaryRange", camera.secondaryRange.get());
        writer_.Track("clipRange", camera.clipRange.get());
        Array("effects", camera.effects, [this](const TEV2_CAMERA_EFFECT& effect) { Effect(effect); });
    }

    void Effect(const TEV2_CAMERA_EFFECT& effect)
    {
        writer_.Integer("type", effect.GetEffectType());
        if (const auto* blur = dynamic_cast<const TEV2_CAMERA_MOTION_BLUR_EFFECT*>(&effect))
        {
            writer_.Track("shutterTime", blur->shutterTime.get());
        }
        else if (const auto* depth = dynamic_cast<const TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT*>(&effect))
        {
            writer_.Track("focusDistance", depth->focusDistance.get());
            writer_.Track("fNumber", depth->fNumber.get());
        }
    }

    void MatrixHierarchy()
    {
        const auto& nodes = scene_.matrixHierarchy.nodes;
        writer_.BeginObject("matrixHierarchy");
        writer_.BeginArray("nodes", nodes.size());
        for (const TEV2_MATRIX_NODE& node : nodes)
        {
            writer_.BeginObject({});
            writer_.String("name", node.name);
            writer_.Integer("parentIndex", node.parentIndex);
            writer_.Track("translation", node.translation.get());
            writer_.Track("rotation", node.rotation.get());
            writer_.Track("scale", node.scale.get());
            if (file_.report.version <= kUntilLegacyMatrix)
            {
                WorldMatrix(node.worldMatrix);
            }
            writer_.String("userText", node.userText);
            Properties(node.properties);
            writer_.EndObject();
        }
        writer_.EndArray();
        writer_.EndObject();
    }

    /// The matrix that old files bring along, row after row.
    void WorldMatrix(const TEV2_MATRIX_3X4& matrix)
    {
        writer_.BeginArray("worldMatrix", 12);
        for (const auto& row : matrix.m)
        {
            for (const float element : row)
            {
                writer_.Float({}, element);
            }
        }
        writer_.EndArray();
    }

    void Properties(const TEV2_EXTENDED_PROPERTIES& properties)
    {
        writer_.BeginObject("properties");
        writer_.BeginArray("stringArrays", properties.stringArrays.size());
        for (const TEV2_NAMED_STRING_ARRAY& array : properties.stringArrays)
        {
            writer_.BeginObject({});
            writer_.String("name", array.name);
            writer_.Strings("strings", array.strings);
            writer_.EndObject();
        }
        writer_.EndArray();
        NamedValues("intValues", properties.intValues);
        NamedValues("floatValues", properties.floatValues);
        NamedValues("vector3Values", properties.vector3Values);
        NamedValues("vector4Values", properties.vector4Values);
        writer_.EndObject();
    }

    template <class Family>
    void NamedValues(std::string_view key, const std::vector<TEV2_NAMED_ANIMATABLE<Family>>& values)
    {
        writer_.BeginArray(key, values.size());
        for (const TEV2_NAMED_ANIMATABLE<Family>& value : values)
        {
            writer_.BeginObject({});
            writer_.String("name", value.name);
            writer_.Track("track", value.track.get());
            writer_.EndObject();
        }
        writer_.EndArray();
    }

    /// An array of owned objects; `members` writes what is inside one of them.
    template <class Object, class Members>
    void Array(std::string_view key, const std::vector<std::unique_ptr<Object>>& objects,
               const Members& members)
    {
        writer_.BeginArray(key, objects.size());
        for (const auto& object : objects)
        {
            if (object == nullptr)
            {
                writer_.Absent({});
                continue;
            }
            writer_.BeginObject({});
            members(*object);
            writer_.EndObject();
        }
        writer_.EndArray();
    }

    /// Records whose body is kept as bytes.
    template <class Object>
    void Bodies(std::string_view key, const std::vector<std::unique_ptr<Object>>& objects)
    {
        Array(key, objects,
              [this](const Object& object)
              {
                  writer_.Integer("chunkId", object.GetChunkId());
                  writer_.Bytes("body", object.body.bytes);
              });
    }

    /// The same, of a kind whose type stands before the body.
    template <class Object>
    void TypedBodies(std::string_view key, const std::vector<std::unique_ptr<Object>>& objects)
    {
        Array(key, objects,
              [this](const Object& object)
              {
                  writer_.Integer("type", object.GetType());
                  writer_.Bytes("body", object.body.bytes);
              });
    }

    template <class Object>
    void Body(std::string_view key, const Object* object)
    {
        if (object == nullptr)
        {
            writer_.Absent(key);
            return;
        }
        writer_.BeginObject(key);
        writer_.Bytes("body", object->body.bytes);
        writer_.EndObject();
    }

    const LoadedFile& file_;
    const TEV2& scene_;
    DumpWriter& writer_;
};

} // namespace

void RunDump(const DumpOptions& options, VerbContext& context)
{
    LoadedFile file;
    if (const TEV2_LOADER::Status read = ReadFile(options.file, file); !read)
    {
        return context.Fail(options.file, read.Reason(), kExitCouldNotRun);
    }
    if (!file.loaded)
    {
        return context.Fail(options.file, WhyNotLoaded(file), kExitFindings);
    }
    const std::unique_ptr<DumpWriter> writer =
        context.json ? MakeJsonDump(context.out) : MakeTreeDump(context.out, options.keys);
    SceneDump(file, *writer).Write();
}

namespace
{

std::string NotNegative(const std::string& text)
{
    return text.starts_with('-') ? "is below 0" : "";
}

class DumpVerb : public Verb
{
public:
    std::vector<OptionRow> Options() override
    {
        return {
            {.name = "FILE",
             .value = &options_.file,
             .help = "The .tv2 file; - is standard input",
             .required = true},
            {.name = "--keys",
             .value = &options_.keys,
             .help = "Tree: print at most this many keys of a track, and lines of bytes of a body",
             .excludes = "--json",
             .check = NotNegative},
        };
    }

    void Run(VerbContext& context) override { RunDump(options_, context); }

private:
    DumpOptions options_;
};

const VerbRegistration kDumpVerb({
    .name = "dump",
    .place = 5,
    .help = "Every value in a file, as an indented tree or as JSON",
    .examples = "tv2 dump --keys 3 walk.tv2\n"
                "tv2 dump --json walk.tv2 | jq '.matrixHierarchy.nodes[].name'",
    .remarks = "Numbers are single precision, in the shortest form that reads back to the same bits.\n"
               "In JSON non-finite numbers are strings: \"NaN\", \"NaN(0xffc00001)\", \"Infinity\".",
    .json_help = "Print JSON with every value",
    .make = Make<DumpVerb>,
});

} // namespace

} // namespace tv2
