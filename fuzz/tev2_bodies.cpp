#include "tests/support/memory_file.h"
#include "tev2_loader/archive/size.h"
#include "tev2_loader/tev2.h"
#include "tev2_loader/walk.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

// One body, of the class that the first byte picks, in a file of its own. Whatever the bytes are, the file loads, the
// body is typed or kept, and is saved as the bytes it was loaded from, before and after it moved with time.

using namespace TEV2_LOADER;

namespace
{

constexpr std::uint32_t kNoPrefix = 0xFFFFFFFFu;

/// Chunks whose bodies are kept where they are not typed, and the number in front of the body.
constexpr struct
{
    std::uint32_t chunk;
    std::uint32_t prefix;
} kClasses[] = {
    {kGlobalLightTintChunk, kNoPrefix},
    {kAmbientLightChunk, kNoPrefix},
    {kLightChunk, TEV2_POINT_LIGHT::kType},
    {kLightChunk, TEV2_DIRECTIONAL_LIGHT::kType},
    {kLightChunk, TEV2_SPOT_LIGHT::kType},
    {kLightChunk, 77},
    {kBezierSplineChunk, kNoPrefix},
    {kMaterialChunk, TEV2_STANDARD_MATERIAL::kType},
    {kMaterialChunk, TEV2_SHADER_MATERIAL::kType},
    {kMaterialChunk, 77},
    {kInstanceChunk, 0},
    {kGeomInstanceChunk, 8},
    {kInstanceMaterialsChunk, 3},
    {kInstanceSubObjectsChunk, 6},
    {kHelperChunk, kNoPrefix},
    {kXref15Chunk, kNoPrefix},
    {kXref20Chunk, kNoPrefix},
    {kXrefObjectChunk, kNoPrefix},
    {kXrefSpeedTreeChunk, kNoPrefix},
    {kRigidChunk, kNoPrefix},
    {kAnimMeshChunk, kNoPrefix},
    {kMorphMeshChunk, kNoPrefix},
    {kWeightedMeshChunk, kNoPrefix},
};

void Require(bool holds)
{
    if (!holds)
        __builtin_trap();
}

class File
{
public:
    std::vector<std::uint8_t> bytes;

    void U32(std::uint32_t number)
    {
        const auto* const begin = reinterpret_cast<const std::uint8_t*>(&number);
        bytes.insert(bytes.end(), begin, begin + sizeof number);
    }
};

/// A file of the newest version with one chunk behind the information.
File FileWith(std::uint32_t chunk, std::uint32_t prefix, std::span<const std::uint8_t> body)
{
    constexpr std::uint32_t kEmptyTexts = 0;
    File file;
    file.U32(kMagic);
    file.U32(kChunkHeader + 2 * sizeof(std::uint32_t));
    file.U32(kInformationChunk);
    file.U32(std::bit_cast<std::uint32_t>(kVersion));
    file.U32(kEmptyTexts);
    file.U32(kChunkHeader + (prefix != kNoPrefix ? 4 : 0) + static_cast<std::uint32_t>(body.size()));
    file.U32(chunk);
    if (prefix != kNoPrefix)
        file.U32(prefix);
    file.bytes.insert(file.bytes.end(), body.begin(), body.end());
    file.bytes.shrink_to_fit(); // a sanitizer sees a read beyond
    return file;
}

/// What Save writes of a record. Valid until the next call.
template <typename Record>
std::span<const std::uint8_t> Saved(const Record& record)
{
    static tv2_tests::MemoryFile file(std::size_t{1} << 16);
    file.Clear();
    TEV2_FILE_WRITER writer = tv2_tests::WriterInto(file);
    writer.requireChunk = false;
    Require(record.Save(writer) && writer.stream->Flush() && writer.stream->lastError == 0);
    writer.stream->handle = nullptr; // it stays open for the next one
    return file.bytes;
}

/// Calls use(record), as its class, for each record of the chunks above.
template <typename Use>
void ForEachBody(const TEV2& scene, const Use& use)
{
    const auto as_class = [&use](const auto& record)
    {
        if constexpr (requires {
                          record.IsTyped();
                          record.GetChunkId();
                      })
            VisitAsClass(record, use);
    };
    VisitLists(scene,
               [&]<typename Member>(const auto&, const Member& member)
               {
                   if constexpr (requires { member.begin(); })
                   {
                       for (const auto& record : member)
                           as_class(*record);
                   }
                   else if constexpr (requires { *member; })
                   {
                       if (member)
                           as_class(*member);
                   }
               });
}

/// Fields follow each other, each with what the file has there.
class FieldsInOrder : public TEV2_FIELD_VISITOR
{
public:
    FieldsInOrder(std::span<const std::uint8_t> file, std::size_t begin) : file_(file), end_(begin) {}

    /// Behind the last field that holds anything.
    std::uint64_t End() const { return end_; }

    void Number(const TEV2_FIELD& field, double number) override
    {
        const std::uint32_t word = Word(field, 0);
        const auto as_float = static_cast<double>(std::bit_cast<float>(word));
        Require(number == as_float || number == word || number == static_cast<std::int32_t>(word) ||
                (std::isnan(number) && std::isnan(as_float)));
        Step(field, sizeof word);
    }
    void Text(const TEV2_FIELD& field, const TEV2_WIDE_STRING& text) override
    {
        Step(field, DiskSize(text));
        Require(field.chunkId == kInformationChunk ||
                std::memcmp(&file_[field.offset + 2], text.Text().data(), 2 * text.Text().size()) == 0);
    }
    void Track(const TEV2_FIELD& field, const TEV2_ANIMATABLE* track) override
    {
        Require(Word(field, 0) == (track != nullptr ? 1u : 0u));
        Require(track == nullptr || Word(field, 4) == track->GetType());
        Step(field, track != nullptr ? TrackSize(*track) : sizeof(std::uint32_t));
    }
    void Bytes(const TEV2_FIELD& field, std::span<const std::uint8_t> bytes) override
    {
        Step(field, bytes.size());
        Require(std::ranges::equal(file_.subspan(field.offset, bytes.size()), bytes));
    }

private:
    std::uint32_t Word(const TEV2_FIELD& field, std::size_t behind) const
    {
        std::uint32_t word = 0;
        Require(field.offset + behind + sizeof word <= file_.size());
        std::memcpy(&word, &file_[field.offset + behind], sizeof word);
        return word;
    }

    void Step(const TEV2_FIELD& field, std::uint64_t size)
    {
        if (field.chunkId == kInformationChunk)
            return; // visited last
        Require(field.offset >= end_ && size <= file_.size() - field.offset);
        end_ = field.offset + size;
    }

    std::span<const std::uint8_t> file_;
    std::uint64_t end_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return -1;
    const auto& [id, prefix] = kClasses[data[0] % std::size(kClasses)];
    const std::span<const std::uint8_t> body(data + 1, size - 1);
    const File file = FileWith(id, prefix, body);

    TEV2_LOAD_REPORT report;
    TEV2_MEMORY_CURSOR cursor(file.bytes.data(), file.bytes.size(), &report);
    TEV2 scene;
    Require(scene.Load(cursor, false));
    Require(report.findings.size() == (scene.HasKeptBodies() ? 1u : 0u));
    int bodies = 0;
    ForEachBody(scene,
                [&](const auto& record)
                {
                    ++bodies;
                    const auto kept = record.Bytes();
                    Require(std::ranges::equal(kept, body.last(kept.size())));
                    SizeArchive archive(kVersion);
                    VisitFields(record, archive);
                    Require(archive.Size() == body.size());
                    Require(std::ranges::equal(Saved(record), body));
                });
    Require(bodies == 1);

    FieldsInOrder fields(file.bytes, file.bytes.size() - body.size());
    WalkScene(scene, file.bytes.data(), report, fields);
    Require(!scene.HasKeptBodies() || fields.End() == file.bytes.size() || body.empty());

    for (const float time : {-1.0f, 0.5f, 100.0f, INFINITY, std::nanf(""), 1.7f})
        scene.SetTime(time);
    scene.Update(0.3f);
    scene.Update(-7.0f);
    // The playback cursors of tracks are saved.
    ForEachBody(scene, [&](const auto& record) { Require(Saved(record).size() == body.size()); });
    return 0;
}
