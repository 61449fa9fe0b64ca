#include "host/import/base/parse_error.h"
#include "host/import/formats.h"

#include <cstdint>
#include <cstdlib>

// A reader of scene files, without the host: whatever the bytes are, they become a description whose motion can be
// evaluated at any time, or are refused with a cause. TV2_FORMAT is the name of the format.

namespace
{

using namespace mobu_host;

constexpr std::size_t kMostTakes = 4;

void Evaluate(const TakeDescription& take)
{
    for (const double seconds : {-1.0, 0.0, 0.51, 1.7, 1e5})
    {
        for (const ModelMotion& motion : take.models)
            motion.transform(seconds);
        for (const PartsMotion& motion : take.parts)
            motion.parts(seconds);
        for (const PropertyMotion& motion : take.properties)
            motion.value(seconds, 0);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    SceneFile file;
    file.path = "no such folder/fuzz"; // nothing is read beside it
    file.bytes.assign(reinterpret_cast<const char*>(data), size);
    ImportNotes notes;
    try
    {
        const SceneDescription scene = FormatNamed(TV2_FORMAT)->read(file, {}, notes);
        for (std::size_t i = 0; i < scene.takes.size() && i < kMostTakes; ++i)
            Evaluate(scene.takes[i]);
    }
    catch (const ParseError& error)
    {
        if (*error.what() == '\0')
            std::abort();
    }
    return 0;
}
