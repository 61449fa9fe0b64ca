#include "exporter/sampling/take_span.h"

namespace tev2_exporter
{
namespace
{

TakeTimes CurrentTakeTimes(ExportContext& context)
{
    TakeTimes times;
    times.transport_rate = context.player.GetTransportFpsValue();
    if (FBTake* take = context.system.CurrentTake)
    {
        FBTimeSpan span = take->LocalTimeSpan;
        times.start = span.GetStart().GetSecondDouble();
        times.stop = span.GetStop().GetSecondDouble();
    }
    return times;
}

} // namespace

TakeFrameSpan GetTakeFrameSpan(ExportContext& context)
{
    const TakeTimes times = CurrentTakeTimes(context);
    return {FrameAt(times.start, times.transport_rate), FrameAt(times.stop, times.transport_rate),
            times.transport_rate};
}

TakeSecondSpan GetTakeSecondSpan(ExportContext& context)
{
    const TakeTimes times = CurrentTakeTimes(context);
    const SamplingRange whole = WholeTake(times, 0.0f);
    return {whole.start, whole.end, times.transport_rate};
}

SamplingRange GetSamplingRange(ExportContext& context, const ExportOptions& options)
{
    const SamplingRange whole = WholeTake(CurrentTakeTimes(context), options.SamplingRate);
    return options.UseCustomRange == 1 ? CustomRange(whole, options.CustomStart, options.CustomEnd) : whole;
}

} // namespace tev2_exporter
