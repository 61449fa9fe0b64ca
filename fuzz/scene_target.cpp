#include "fuzz/scene_target.h"

#include "host/import/formats.h"
#include "host/import/host_scene.h"
#include "host/import/parse_error.h"

#include <mobu_host/scene.h>

#include <cstdlib>

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

int ReadAsScene(const char* format, const std::uint8_t* data, std::size_t size)
{
    try
    {
        mobu_host::ImportNotes notes;
        mobu_host::SceneFile file;
        file.path = "no such folder/fuzz"; // nothing is read beside it
        file.bytes.assign(reinterpret_cast<const char*>(data), size);
        mobu_host::BuildHostScene(mobu_host::FormatNamed(format)->read(file, {}, notes), {}, notes);
        EvaluateTakes();
    }
    catch (const mobu_host::ParseError& error)
    {
        if (*error.what() == '\0')
            std::abort();
    }
    return 0;
}
