// tv2 dump: everything in a file, value by value.

#include "tools/tv2/dump_writer.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include <limits>
#include <utility>

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

/// Writes the fields of records. What a version did not have is shown as absent.
class DumpArchive
{
public:
    DumpArchive(DumpWriter& writer, float version) : writer_(writer), version_(version) {}

    static constexpr bool Since(float /*version*/) { return true; }
    bool UpTo(float version) const { return version_ <= version; }

    void Text(const char* label, const TEV2_WIDE_STRING& text) { writer_.String(label, text); }
    void Texts(const char* label, const std::vector<TEV2_WIDE_STRING>& texts, Counts = Counts::kBoth)
    {
        writer_.Strings(label, texts);
    }

    void Value(std::string_view label, float value, Counts = Counts::kBoth) { writer_.Float(label, value); }
    void Value(std::string_view label, std::int32_t value, Counts = Counts::kBoth)
    {
        writer_.Integer(label, value);
    }
    void Value(std::string_view label, std::uint32_t value, Counts = Counts::kBoth)
    {
        writer_.Integer(label, value);
    }
    void Value(std::string_view label, const TEV2_FLOAT32_RANGE& range, Counts = Counts::kBoth)
    {
        writer_.BeginObject(label);
        writer_.Float("minimum", range.minimum);
        writer_.Float("maximum", range.maximum);
        writer_.EndObject();
    }

    void Constant(const char* label, float value, float /*always*/, Counts = Counts::kBoth)
    {
        writer_.Float(label, value);
    }

    void Bytes(const char* label, std::span<const std::uint8_t> bytes, Counts = Counts::kBoth)
    {
        writer_.Bytes(label, bytes);
    }

    template <class Object>
    void Record(std::string_view label, const Object& record, Counts = Counts::kBoth)
    {
        writer_.BeginObject(label);
        VisitFields(record, *this);
        writer_.EndObject();
    }

    template <class Object, class... Examine>
    void Records(const char* label, const std::vector<Object>& records, Counts counts = Counts::kBoth,
                 const Examine&...)
    {
        writer_.BeginArray(label, records.size());
        for (const Object& record : records)
            Record({}, record, counts);
        writer_.EndArray();
    }

    template <class Family>
    void Track(const char* label, const std::unique_ptr<Family>& track, Counts = Counts::kBoth)
    {
        if constexpr (std::is_base_of_v<TEV2_ANIMATABLE, Family>)
            writer_.Track(label, track.get());
        else
            Typed(label, track);
    }

    void Bool(const char* label, bool flag, Counts = Counts::kBoth) { writer_.Boolean(label, flag); }

    template <ChoiceEnum Enum>
    void Choice(const char* label, Enum choice, Counts = Counts::kBoth)
    {
        writer_.Text(label, ChoiceNames(choice)[static_cast<std::size_t>(choice)]);
    }

    static void Layout() {}

    template <class Object>
    void Optional(const char* label, const std::unique_ptr<Object>& record, Counts counts = Counts::kBoth)
    {
        if (record)
            Record(label, *record, counts);
        else
            writer_.Absent(label);
    }

    template <class Number>
    void OptionalValue(const char* label, const std::optional<Number>& value)
    {
        if (value)
            Value(label, *value);
        else
            writer_.Absent(label);
    }

    template <class Object, class... More>
    void Boxed(const char* label, const TEV2_BOXED<Object>& box, const More&... more)
    {
        writer_.BeginObject(label);
        Object::Fields(*box, *this, more...);
        writer_.EndObject();
    }

    template <class Family>
    void Typed(std::string_view label, const std::unique_ptr<Family>& object, Counts = Counts::kBoth)
    {
        if (!object)
            return writer_.Absent(label);
        writer_.BeginObject(label);
        writer_.Integer("type", object->GetType());
        decltype(ClassesOf(*object))::VisitAs(*object, [this](const auto& concrete)
                                              { concrete.Fields(concrete, *this); });
        writer_.EndObject();
    }

    template <class Family>
    void TypedObjects(const char* label, const std::vector<std::unique_ptr<Family>>& objects,
                      Counts = Counts::kBoth)
    {
        writer_.BeginArray(label, objects.size());
        for (const auto& object : objects)
            Typed({}, object);
        writer_.EndArray();
    }

    template <class Family, class Kept>
    void Effects(const char* label, const std::vector<std::unique_ptr<Family>>& effects, const Kept& kept,
                 Counts = Counts::kBoth)
    {
        TypedObjects(label, effects);
        if (kept.count != 0)
            writer_.Bytes("keptEffects", kept.bytes);
    }

    template <class Family>
    void Map(const char* label, const std::unique_ptr<Family>& map, Counts = Counts::kBoth)
    {
        if (!map || map->IsTyped())
            return Typed(label, map);
        writer_.BeginObject(label);
        writer_.Integer("type", map->GetType());
        writer_.Bytes("body", map->Bytes());
        writer_.EndObject();
    }

    static void VertexCount(const char*, std::uint32_t, std::size_t) {}

    template <class Element>
    void Values(std::string_view label, const std::vector<Element>& values, Counts = Counts::kBoth)
    {
        writer_.Numbers(label, NumberTable(values));
    }

    template <class Element>
    void Column(std::string_view label, const std::vector<Element>& values, std::size_t)
    {
        Values(label, values);
    }

    template <class Element>
    void OptionalColumn(const char* label, const std::vector<Element>& values, std::size_t count)
    {
        if (values.empty())
            writer_.Absent(label);
        else
            Column(label, values, count);
    }

    void ColumnCount(const char* label, std::uint32_t number) { Value(label, number); }

    template <class Element>
    void ColumnGroup(const char* label, const std::vector<std::vector<Element>>& columns, std::size_t count)
    {
        writer_.BeginArray(label, columns.size());
        for (const auto& column : columns)
            Column({}, column, count);
        writer_.EndArray();
    }

    template <class Object>
    void Run(const char* label, const std::vector<Object>& records, std::size_t)
    {
        Records(label, records);
    }

    /// Row after row.
    void LegacyMatrix(const char* label, const TEV2_MATRIX_3X4& matrix)
    {
        writer_.BeginArray(label, 12);
        for (const auto& row : matrix.m)
            for (const float element : row)
                writer_.Float({}, element);
        writer_.EndArray();
    }

private:
    DumpWriter& writer_;
    float version_;
};

class SceneDump
{
public:
    SceneDump(const LoadedFile& file, DumpWriter& writer)
        : file_(file), writer_(writer), archive_(writer, file.report.version)
    {
    }

    void Write()
    {
        writer_.BeginObject(file_.title);
        writer_.Text("file", file_.argument);
        if (!IsUtf8(file_.argument))
            writer_.Text("fileBytes", PercentEncoded(file_.argument));
        writer_.Integer("bytes", static_cast<std::int64_t>(file_.image.size()));
        Chunks();
        VisitLists(std::as_const(*file_.scene),
                   [this](const auto& list, const auto& member) { Member(list, member); });
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

    template <class Record>
    void Member(const TEV2_LIST& list, const Record& record)
    {
        archive_.Record(list.label, record, Counts::kNever);
        if (list.kind == kInformationChunk)
            ArrayLengths();
    }

    template <class Object>
    void Member(const TEV2_LIST& list, const std::unique_ptr<Object>& object)
    {
        if (object == nullptr)
        {
            writer_.Absent(list.label);
            return;
        }
        archive_.Record(list.label, *object, Counts::kNever);
    }

    template <class Object>
    void Member(const TEV2_LIST& list, const TEV2::Array<Object>& objects)
    {
        Array(list.label, objects);
    }

    /// The instance lists are an array of arrays.
    void Member(const TEV2_INSTANCE_LIST& list, const TEV2::Array<TEV2_INSTANCE>& instances)
    {
        if (list.index == 0)
            writer_.BeginArray(list.label, kInstanceListCount);
        Array({}, instances);
        if (list.index + 1 == kInstanceListCount)
            writer_.EndArray();
    }

    template <class Object>
    void Array(std::string_view key, const TEV2::Array<Object>& objects)
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
            if constexpr (requires { object->GetType(); })
                writer_.Integer("type", object->GetType());
            else if constexpr (
                requires { object->IsTyped(); } && !requires { object->chunkId; })
                writer_.Integer("chunkId", object->GetChunkId());
            VisitAsClass(*object, [this](const auto& concrete) { VisitFields(concrete, archive_); });
            writer_.EndObject();
        }
        writer_.EndArray();
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
            writer_.Integer({}, count);
        writer_.EndArray();
    }

    const LoadedFile& file_;
    DumpWriter& writer_;
    DumpArchive archive_;
};

} // namespace

void RunDump(const DumpOptions& options, VerbContext& context)
{
    LoadedFile file;
    if (const TEV2_LOADER::Status read = ReadFile(options.file, file); !read)
        return context.Fail(options.file, read.Reason(), kExitCouldNotRun);
    if (!file.loaded)
        return context.Fail(options.file, WhyNotLoaded(file), kExitFindings);
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
             .required = true,
             .files = ".tv2"},
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
    .place = 50,
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
