#pragma once

#include "tools/tv2/json_answer.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/verb.h"

#include <functional>

namespace tv2
{

/// Reads the files one after the other. `examine` prints what it finds or, with --json, returns an entry of "files"; one
/// for a file that cannot be read is made here.
void AnswerForEachFile(const std::vector<std::string>& files, VerbContext& context,
                       const std::function<Json(LoadedFile& file)>& examine);

} // namespace tv2
