#include "exporter/sampling/take_span.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tev2_exporter
{
namespace
{

// Truncates toward zero; what does not fit is held at the ends of the type, and no number is 0.
std::int32_t TruncateToInt32(double value)
{
    using Limits = std::numeric_limits<std::int32_t>;
    if (std::isnan(value))
        return 0;
    return static_cast<std::int32_t>(
        std::clamp(value, static_cast<double>(Limits::min()), static_cast<double>(Limits::max())));
}

float FrameToSeconds(std::int32_t frame, double rate)
{
    return static_cast<float>(static_cast<double>(static_cast<float>(frame)) / rate);
}

} // namespace

TakeFrameSpan GetTakeFrameSpan(ExportContext& context)
{
    FBTake* take = context.system.CurrentTake;
    FBTimeSpan span = take->LocalTimeSpan;

    TakeFrameSpan frames;
    frames.transport_rate = context.player.GetTransportFpsValue();
    frames.start_frame = TruncateToInt32(frames.transport_rate * span.GetStart().GetSecondDouble());
    frames.stop_frame = TruncateToInt32(span.GetStop().GetSecondDouble() * frames.transport_rate);
    return frames;
}

TakeSecondSpan GetTakeSecondSpan(ExportContext& context)
{
    const TakeFrameSpan frames = GetTakeFrameSpan(context);
    return {FrameToSeconds(frames.start_frame, frames.transport_rate),
            FrameToSeconds(frames.stop_frame, frames.transport_rate), frames.transport_rate};
}

SamplingRange GetSamplingRange(ExportContext& context, const ExportOptions& options)
{
    const TakeSecondSpan take = GetTakeSecondSpan(context);
    SamplingRange range{take.start, take.stop, options.SamplingRate};
    if (options.UseCustomRange == 1)
    {
        range.start = options.CustomStart >= take.start ? options.CustomStart : take.start;
        range.end = options.CustomEnd <= take.stop ? options.CustomEnd : take.stop;
    }
    return range;
}

} // namespace tev2_exporter
