#include "exporter/sampling/take_span.h"

namespace tev2_exporter
{
namespace
{

TakeTimes TimesOf(ExportContext& context, FBTake* take)
{
    TakeTimes times;
    times.transport_rate = context.player.GetTransportFpsValue();
    if (take)
    {
        FBTimeSpan span = take->LocalTimeSpan;
        times.start = span.GetStart().GetSecondDouble();
        times.stop = span.GetStop().GetSecondDouble();
    }
    return times;
}

TakeTimes CurrentTakeTimes(ExportContext& context)
{
    return TimesOf(context, context.system.CurrentTake);
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

SamplingRange GetSamplingRange(ExportContext& context, FBTake* take, const ExportOptions& options)
{
    const SamplingRange whole = WholeTake(TimesOf(context, take), options.SamplingRate);
    return options.UseCustomRange == 1 ? CustomRange(whole, options.CustomStart, options.CustomEnd) : whole;
}

} // namespace tev2_exporter
