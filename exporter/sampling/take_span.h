#pragma once

#include "exporter/base/export_context.h"
#include "exporter/base/export_options.h"
#include "exporter/sampling/sampling_range.h"

#include <cstdint>

namespace tev2_exporter
{

struct TakeFrameSpan
{
    std::int32_t start_frame = 0; ///< both truncated toward zero
    std::int32_t stop_frame = 0;
    double transport_rate = 0.0; ///< frames a second
};

struct TakeSecondSpan
{
    float start = 0.0f; ///< seconds of whole transport frames
    float stop = 0.0f;
    double transport_rate = 0.0;
};

/// The local time span of the current take in whole frames of the transport rate. Without a current take: 0 to
/// 0.
TakeFrameSpan GetTakeFrameSpan(ExportContext& context);

/// The same span, as the seconds of those frames.
TakeSecondSpan GetTakeSecondSpan(ExportContext& context);

/// What of a take is sampled: all of it, or the custom range of `options` clamped into it. The take need not be
/// current.
SamplingRange GetSamplingRange(ExportContext& context, FBTake* take, const ExportOptions& options);

} // namespace tev2_exporter
