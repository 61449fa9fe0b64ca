#include "tools/tv2/loaded_file.h"

#include "tev2_loader/serialisation/file_image.h"
#include "tev2_loader/serialisation/memory_cursor.h"
#include "tools/tv2/text.h"

#include <algorithm>

using namespace TEV2_LOADER;

bool ReadFile(const std::string& path, LoadedFile& file, std::string& error)
{
    file.path = path;
    file.scene = std::make_unique<TEV2>();
    std::string cause;
    if (!ReadFileImage(path, file.image, cause))
    {
        error = path + ": " + cause;
        return false;
    }
    TEV2_MEMORY_CURSOR cursor(file.image.data(), file.image.size(), &file.report);
    file.loaded = file.scene->Load(cursor, false);
    return true;
}

std::string WhyNotLoaded(const LoadedFile& file)
{
    const auto error = std::find_if(file.report.findings.begin(), file.report.findings.end(),
                                    [](const TEV2_LOAD_FINDING& finding)
                                    { return finding.severity == TEV2_LOAD_SEVERITY::Error; });
    std::string text = file.path + ": not a sound .tv2 file";
    if (error != file.report.findings.end())
    {
        text += std::string(": ") + CodeName(error->code) + " at byte " + CountText(error->offset);
        if (!error->path.empty())
        {
            text += " in " + error->path;
        }
        text += ": expected " + error->expected + ", found " + error->found;
    }
    return text;
}
