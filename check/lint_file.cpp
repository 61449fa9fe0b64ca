#include "check/lint_group.h"

namespace tev2_check
{

using namespace TEV2_LOADER;

namespace
{

constexpr CheckCode kInformationNotFirst = {
    "information-not-first", Severity::Warning,
    "The first chunk is not the information record, so what comes before it is read as version 0."};
constexpr CheckCode kChunkRepeated = {
    "chunk-repeated", Severity::Warning,
    "A chunk that a file has once is repeated and replaces the earlier one."};
constexpr CheckCode kChunkMissing = {
    "chunk-missing", Severity::Warning,
    "A chunk that every writer writes is missing: the file may have been cut off between two chunks."};
constexpr CheckCode kTextCut = {
    "text-cut", Severity::Warning,
    "A name or text has 65,535 units, the most that a file can hold: what followed was cut off when it was "
    "saved."};
constexpr CheckCode kArrayLengthsDiffer = {"array-lengths-differ", Severity::Note,
                                           "The array lengths differ from the numbers of objects."};
constexpr CheckCode kTimeRangeReversed = {"time-range-reversed", Severity::Warning,
                                          "The time range ends before it starts."};
constexpr CheckCode kFileCodes[] = {kInformationNotFirst, kChunkRepeated,    kChunkMissing, kTextCut,
                                    kArrayLengthsDiffer,  kTimeRangeReversed};

class FileGroup : public LintGroup
{
public:
    FileGroup(const LoadedFile& file, Findings& findings)
        : file_(file), scene_(*file.scene), findings_(findings)
    {
        CheckChunks();
        CheckArrayLengths();
    }

    void Number(const TEV2_FIELD& field, double /*number*/) override
    {
        const auto& range = scene_.environment.timeRange;
        if (field.chunkId == kEnvironmentChunk && field.component == 0 &&
            std::string_view(field.label) == "timeRange" && range.maximum < range.minimum)
        {
            findings_.Add(kTimeRangeReversed, field, field.offset,
                          FloatText(range.minimum) + " to " + FloatText(range.maximum));
        }
    }

    void Text(const TEV2_FIELD& field, const TEV2_WIDE_STRING& text) override
    {
        if (text.Text().size() == kMostStringUnits)
        {
            findings_.Add(kTextCut, field, field.offset,
                          CountText(kMostStringUnits) + " units, the most that a file can hold");
        }
    }

private:
    void CheckChunks()
    {
        const auto& chunks = file_.report.chunks;
        if (!chunks.empty() && chunks[0].id != kInformationChunk)
        {
            findings_.AddForChunk(kInformationNotFirst, chunks[0], chunks[0].offset, "",
                                  "the first chunk is " + ChunkTitle(chunks[0].id));
        }
        for (const std::uint32_t id :
             {kInformationChunk, kArrayLengthsChunk, kEnvironmentChunk, kGlobalLightTintChunk,
              kAmbientLightChunk, kMatrixHierarchyChunk, kCameraManChunk})
        {
            bool seen = false;
            for (const TEV2_CHUNK_SPAN& chunk : chunks)
            {
                if (chunk.id == id && seen)
                    findings_.AddForChunk(kChunkRepeated, chunk, chunk.offset, "",
                                          "another chunk " + ChunkTitle(id));
                seen = seen || chunk.id == id;
            }
            if (!seen && id != kGlobalLightTintChunk && id != kAmbientLightChunk)
            {
                findings_.AddForFile(kChunkMissing, file_.image.size(), "no chunk " + ChunkTitle(id));
            }
        }
    }

    void CheckArrayLengths()
    {
        const auto announced = AnnouncedLengths(file_);
        if (!announced)
            return;
        const TEV2_CHUNK_SPAN& chunk = *LastChunk(file_, kArrayLengthsChunk);
        const TEV2_ARRAY_LENGTH_HELPER present(scene_);
        for (std::size_t i = 0; i < TEV2_ARRAY_LENGTH_HELPER::kCounts; ++i)
        {
            if (announced->counts[i] != present.counts[i])
            {
                findings_.AddForChunk(
                    kArrayLengthsDiffer, chunk, chunk.offset + kChunkHeader + sizeof(std::uint32_t) * (i + 1),
                    "arrayLengths",
                    "number " + std::to_string(i + 1) + " announces " + CountText(announced->counts[i]) +
                        ", there are " + CountText(present.counts[i]));
            }
        }
    }

    const LoadedFile& file_;
    const TEV2& scene_;
    Findings& findings_;
};

} // namespace

LintGroupRow FileLint()
{
    return {kFileCodes,
            [](const LoadedFile& file, const CheckOptions&, Findings& findings) -> std::unique_ptr<LintGroup>
            { return std::make_unique<FileGroup>(file, findings); }};
}

} // namespace tev2_check
