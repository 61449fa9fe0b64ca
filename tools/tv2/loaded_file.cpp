#include "tools/tv2/loaded_file.h"

#include "tev2_loader/io/file_image.h"
#include "tools/tv2/system.h"

namespace tv2
{

using TEV2_LOADER::Status;

Status ReadFile(const std::string& argument, LoadedFile& file)
{
    const bool piped = argument == kStandardInput;
    file.argument = argument;
    file.title = piped ? "standard input" : argument;
    const Status read =
        piped ? ReadStandardInput(file.image) : TEV2_LOADER::ReadFileImage(argument, file.image);
    if (!read)
        return Status::Failure(file.title + ": " + read.Reason());
    LoadSceneOf(file);
    return {};
}

} // namespace tv2
