#pragma once

#include "exporter/base/export_context.h"
#include "exporter/base/export_options.h"

#include <vector>

namespace tev2_exporter
{

/// False when the export cannot be sampled: in a take's range the time does not advance from one instant to the next,
/// or the samples are larger than a file can be. A rate of 0 has an infinite step and gives the two ends of a range.
/// Reads the scene and changes nothing in it.
bool CanBeSampled(ExportContext& context, const ExportOptions& options, const std::vector<FBTake*>& takes,
                  const std::vector<FBModel*>& models);

} // namespace tev2_exporter
