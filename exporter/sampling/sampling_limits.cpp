#include "exporter/sampling/sampling_limits.h"

#include "exporter/sampling/take_span.h"

#include <algorithm>

namespace tev2_exporter
{
namespace
{

struct ModelCount
{
    std::size_t nodes = 0;
    std::size_t cameras = 0;
};

void Count(FBModel& model, ModelCount& count)
{
    ++count.nodes;
    count.cameras += model.Is(FBCamera::TypeInfo) ? 1 : 0;
    const int children = model.Children.GetCount();
    for (int child = 0; child < children; ++child)
        Count(*model.Children[child], count);
}

} // namespace

bool CanBeSampled(ExportContext& context, const ExportOptions& options, const std::vector<FBTake*>& takes,
                  const std::vector<FBModel*>& models)
{
    ModelCount count;
    for (FBModel* model : models)
        Count(*model, count);
    return std::ranges::all_of(takes,
                               [&](FBTake* take)
                               {
                                   const SamplingRange range = GetSamplingRange(context, take, options);
                                   return (range.rate == 0.0f || TimeAdvances(range)) &&
                                          SampledBytes(range, count.nodes, count.cameras) < kFileSizeLimit;
                               });
}

} // namespace tev2_exporter
