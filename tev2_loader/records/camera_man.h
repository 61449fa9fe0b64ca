#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/records/object_bases.h"
#include "tev2_loader/tracks/animatable.h"

#include <memory>

namespace TEV2_LOADER
{

/// The camera switcher: which camera shows the scene at what time.
class TEV2_CAMERA_MAN : public TEV2_INTERNAL_ANIM_OBJECT,
                        public TEV2_SERIALISABLE_OBJECT,
                        public TEV2_CHUNK_OBJECT
{
public:
    /// Indices into the scene's cameras, -1 for none of them. Null when the scene has no switcher. A file may
    /// hold any number here: check it before use.
    std::unique_ptr<TEV2_ANIMATABLE_INT32> cameraIndex;

    template <typename Self, typename Archive>
    static void Fields(Self& switcher, Archive& archive)
    {
        archive.Track("cameraIndex", switcher.cameraIndex, Counts::kBoth);
    }

    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;
    std::uint32_t GetChunkId() const override { return kCameraManChunk; }

    void Update(float delta_time) override;
    void SetTime(float time) override;
};

} // namespace TEV2_LOADER
