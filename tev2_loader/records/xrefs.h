#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/records/lit_object.h"
#include "tev2_loader/records/record_of.h"
#include "tev2_loader/records/scaled_object.h"

#include <cstdint>

// References into other files. The library does not open them: a program resolves them, and moves what it finds with
// the scene's time plus timeOffset.

namespace TEV2_LOADER
{

/// Another file: kChunkId 15 is a scene to be shown below a node, 20 a library that is read for what it holds.
template <std::uint32_t kChunkId>
class TEV2_XREF final : public TEV2_MOVING_RECORD_OF<TEV2_XREF<kChunkId>, TEV2_CHUNK_OBJECT,
                                                     TEV2_INTERNAL_ANIM_OBJECT, TEV2_KEPT_BODY>
{
public:
    TEV2_WIDE_STRING fileName;  ///< relative to the folder of this file, with / between folders
    std::uint32_t node = kNone; ///< index of the node in the hierarchy
    float timeOffset = 0.0f;    ///< seconds

    template <typename Self, typename Archive>
    static void Fields(Self& reference, Archive& archive)
    {
        archive.Layout();
        archive.Text("fileName", reference.fileName);
        archive.Value("node", reference.node);
        archive.Value("timeOffset", reference.timeOffset);
    }

    std::uint32_t GetChunkId() const override { return kChunkId; }
};

/// An object of a library's file, placed here. The scene does not move it with time.
class TEV2_XREF_OBJECT final
    : public TEV2_MOVING_RECORD_OF<TEV2_XREF_OBJECT, TEV2_POSITIONAL_OBJECT, UNUSED__TEV2_SCALED_OBJECT,
                                   TEV2_LIT_OBJECT, TEV2_CHUNK_OBJECT, TEV2_KEPT_BODY>
{
public:
    std::uint32_t library = kNone; ///< index in the scene's xrefs20
    std::uint32_t chunkId = 0;     ///< kind of the object: the chunk that it is in there
    TEV2_WIDE_STRING objectName;   ///< its name there

    template <typename Self, typename Archive>
    static void Fields(Self& object, Archive& archive)
    {
        TEV2_POSITIONAL_OBJECT::Fields(object, archive);
        TEV2_LIT_OBJECT::Fields(object, archive);
        archive.Layout();
        archive.Value("library", object.library);
        archive.Value("chunkId", object.chunkId);
        archive.Text("objectName", object.objectName);
    }

    std::uint32_t GetChunkId() const override { return kXrefObjectChunk; }
};

/// A tree, grown from a file of its own.
class TEV2_XREF_SPEEDTREE final
    : public TEV2_MOVING_RECORD_OF<TEV2_XREF_SPEEDTREE, TEV2_POSITIONAL_OBJECT, UNUSED__TEV2_SCALED_OBJECT,
                                   TEV2_LIT_OBJECT, TEV2_CHUNK_OBJECT, TEV2_KEPT_BODY>
{
public:
    TEV2_WIDE_STRING fileName; ///< relative to the folder of this file, with / between folders
    std::uint32_t seed = 0;    ///< of its random numbers
    float height = 0.0f;       ///< metres; 0: the model's own

    template <typename Self, typename Archive>
    static void Fields(Self& tree, Archive& archive)
    {
        TEV2_POSITIONAL_OBJECT::Fields(tree, archive);
        TEV2_LIT_OBJECT::Fields(tree, archive);
        archive.Layout();
        archive.Text("fileName", tree.fileName);
        archive.Value("seed", tree.seed);
        archive.Value("height", tree.height);
    }

    std::uint32_t GetChunkId() const override { return kXrefSpeedTreeChunk; }
};

} // namespace TEV2_LOADER
