#pragma once

#include "exporter/base/export_context.h"
#include "tev2_loader/records/inf.h"

#include <string>

namespace tev2_exporter
{

/// Puts the exporter's title and the four information lines (user, time of export in UTC, the file being
/// written, the scene it comes from) into `information`, replacing its texts.
void FillFileInformation(ExportContext& context, const std::u16string& file_name,
                         TEV2_LOADER::TEV2_INF& information);

} // namespace tev2_exporter
