#include "host/import/base/parse_error.h"
#include "host/import/formats.h"
#include "host/import/host_scene.h"

#include <mobu_host/scene.h>

#include <cstdint>
#include <cstdlib>

// A scene file of any format through all of the host: the reader, the host's scene, and its evaluation in some takes. A
// file that cannot be read has to say why.

namespace
{

constexpr int kMostTakes = 4;

void EvaluateTakes()
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

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    mobu_host::SceneFile file;
    file.path = "no such folder/fuzz"; // nothing is read beside it
    file.bytes.assign(reinterpret_cast<const char*>(data), size);
    const mobu_host::Format* const format = mobu_host::FormatOf(file.bytes);
    if (format == nullptr || format->read == nullptr)
        return 0;
    mobu_host::ImportNotes notes;
    try
    {
        mobu_host::BuildHostScene(format->read(file, {}, notes), {}, notes);
        EvaluateTakes();
    }
    catch (const mobu_host::ParseError& error)
    {
        if (*error.what() == '\0')
            std::abort();
    }
    return 0;
}
