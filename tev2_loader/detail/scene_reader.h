#pragma once

#include "tev2_loader/tev2.h"

#include <cstdint>

namespace TEV2_LOADER
{

/// How a reader treats a record that ends with its chunk whatever its bytes are: lights, materials, meshes, splines,
/// helpers, instances and references.
enum class TEV2_BODIES : std::uint8_t
{
    Read,
    Skip, ///< a null entry in its list
};

/// Reads the chunks of a whole file into a scene. A class that reads some of them otherwise overrides ReadChunk.
class TEV2_SCENE_READER
{
public:
    /// The scene must be empty.
    explicit TEV2_SCENE_READER(TEV2& scene, TEV2_BODIES bodies = TEV2_BODIES::Read)
        : scene_(scene), bodies_(bodies)
    {
    }
    virtual ~TEV2_SCENE_READER() = default;
    TEV2_SCENE_READER(const TEV2_SCENE_READER&) = delete;
    TEV2_SCENE_READER& operator=(const TEV2_SCENE_READER&) = delete;

    /// The file must begin at the cursor's image. On failure: false, the reason in the cursor's report, and what was
    /// read before stays.
    bool Read(TEV2_MEMORY_CURSOR& cursor);

protected:
    /// Reads what follows the number of a chunk. `version` is that of the file; 0 before its information.
    virtual bool ReadChunk(TEV2_MEMORY_CURSOR& cursor, std::uint32_t id, float version);

private:
    TEV2& scene_;
    TEV2_BODIES bodies_;
};

} // namespace TEV2_LOADER
