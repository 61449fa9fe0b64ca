#include "host/scene_import/fbx/fbx_import.h"

#include <mobu_host/scene.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// The whole way of an FBX file: records, objects, curves, the host's scene, and its evaluation in every take.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace
{

constexpr int kMostTakes = 4;

void EvaluateAllTakes()
{
    FBPropertyListTake& takes = mobu_host::Scene().Takes;
    for (int i = 0; i < takes.GetCount() && i < kMostTakes; ++i)
    {
        FBSystem().CurrentTake = takes[i];
        for (const double seconds : {-1.0, 0.0, 0.51, 1.7, 1e5})
        {
            FBTime time;
            time.SetSecondDouble(seconds);
            FBPlayerControl().Goto(time);
            mobu_host::Scene().Evaluate();
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    mobu_host::ImportNotes notes;
    std::string cause;
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    if (mobu_host::fbx::ImportFbx(file, notes, cause))
        EvaluateAllTakes();
    else if (cause.empty())
        std::abort();
    return 0;
}
