#include "tools/tv2/loaded_file.h"

#include "tev2_loader/io/file_image.h"
#include "tools/tv2/system.h"

#include <filesystem>

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

bool IsSameFile(const std::string& a, const std::string& b)
{
    std::error_code ignored;
    return a == b || std::filesystem::equivalent(a, b, ignored);
}

} // namespace tv2
