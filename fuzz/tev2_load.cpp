#include "tev2_loader/tev2.h"

#include <cstddef>
#include <cstdint>

// Whatever the bytes are: a scene loads or is refused with one error, and plays to any time either way.

using namespace TEV2_LOADER;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    TEV2_LOAD_REPORT report;
    TEV2_MEMORY_CURSOR cursor(data, size, &report);
    TEV2 scene;
    const bool loaded = scene.Load(cursor, true);
    std::size_t errors = 0;
    for (const TEV2_LOAD_FINDING& finding : report.findings)
        errors += finding.severity == TEV2_LOAD_SEVERITY::Error ? 1 : 0;
    if (errors != (loaded ? 0u : 1u))
        __builtin_trap();
    for (const float time : {-1.0f, 0.5f, 1.7f, 100.0f, 0.6f})
        scene.SetTime(time);
    scene.Update(0.3f);
    scene.Update(-7.0f);
    return 0;
}
