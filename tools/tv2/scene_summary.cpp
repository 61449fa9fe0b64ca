#include "tools/tv2/scene_summary.h"

#include "check/track_view.h"
#include "tev2_loader/walk.h"
#include "tools/tv2/text.h"

#include <sstream>

namespace tv2
{

using namespace TEV2_LOADER;
using tev2_check::TrackView;

namespace
{

class TrackCounter : public TEV2_FIELD_VISITOR
{
public:
    explicit TrackCounter(std::map<std::uint32_t, TrackTotal>& totals) : totals_(totals) {}

    void Track(const TEV2_FIELD&, const TEV2_ANIMATABLE* track) override
    {
        if (track != nullptr)
        {
            TrackTotal& total = totals_[track->GetType()];
            ++total.tracks;
            total.keys += TrackView(*track).ValueCount();
        }
    }

private:
    std::map<std::uint32_t, TrackTotal>& totals_;
};

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
    {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

} // namespace

Summary Summarise(LoadedFile& file)
{
    Summary summary;
    TEV2& scene = *file.scene;
    summary.has_information = LastChunk(file, kInformationChunk) != nullptr;
    summary.has_environment = LastChunk(file, kEnvironmentChunk) != nullptr;
    summary.information_lines = Lines(ReadableText(scene.information.infoText.Text()));
    TrackCounter counter(summary.tracks);
    WalkScene(scene, file.image.data(), file.report, counter);
    for (const TEV2_CHUNK_SPAN& chunk : file.report.chunks)
    {
        ChunkTotal& total = summary.chunks[chunk.id];
        ++total.chunks;
        total.bytes += chunk.size;
    }
    if (scene.cameraMan.cameraIndex != nullptr)
    {
        const TrackView view(*scene.cameraMan.cameraIndex);
        summary.switcher_keys = view.ValueCount();
        for (std::size_t i = 0; i < view.ValueCount(); ++i)
            summary.active_cameras.insert(view.Integer(i));
    }
    for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
        summary.top_nodes += node.parentIndex < 0 ? 1 : 0;
    summary.extents = MeasureExtents(scene);
    return summary;
}

} // namespace tv2
