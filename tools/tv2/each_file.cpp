#include "tools/tv2/each_file.h"

namespace tv2
{

void AnswerForEachFile(const std::vector<std::string>& files, VerbContext& context,
                       const std::function<Json(LoadedFile& file)>& examine)
{
    Json json = {{"files", Json::array()}};
    for (const std::string& path : files)
    {
        LoadedFile file;
        const TEV2_LOADER::Status read = ReadFile(path, file);
        if (!read)
            context.Complain(read.Reason(), kExitCouldNotRun);
        json["files"].push_back(read ? examine(file) : JsonFailure(path, read.Reason()));
    }
    if (context.json)
        context.out << JsonAnswer(json);
}

void AnswerForEachScene(const std::vector<std::string>& files, VerbContext& context,
                        const std::function<Json(LoadedFile& file)>& examine)
{
    AnswerForEachFile(files, context,
                      [&](LoadedFile& file) -> Json
                      {
                          if (file.loaded)
                              return examine(file);
                          const std::string why = WhyNotLoaded(file);
                          context.Complain(why, kExitFindings);
                          return JsonFailure(file.argument, why);
                      });
}

} // namespace tv2
