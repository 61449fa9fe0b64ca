#pragma once

#include "tools/tv2/json_answer.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/verb.h"

#include <functional>

namespace tv2
{

/// Reads the files in order and calls `examine` for each that can be read. It prints text or, with --json, returns an
/// entry of "files".
void AnswerForEachFile(const std::vector<std::string>& files, VerbContext& context,
                       const std::function<Json(LoadedFile& file)>& examine);

/// The same for files that load. The others are complained about as findings.
void AnswerForEachScene(const std::vector<std::string>& files, VerbContext& context,
                        const std::function<Json(LoadedFile& file)>& examine);

} // namespace tv2
