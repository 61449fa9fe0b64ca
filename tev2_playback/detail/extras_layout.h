#pragma once

#include "tev2_playback/detail/block_plan.h"
#include "tev2_playback/detail/clip_source.h"
#include "tev2_playback/detail/clock_table.h"
#include "tev2_playback/detail/extras_data.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TEV2_PLAYBACK
{

/// Lays out cameras, the camera switcher and user properties.
class ExtrasLayout
{
public:
    /// Adds their clocks to those of the nodes. The source must outlive the layout.
    ExtrasLayout(const ClipSource& source, ClockTable& clocks);

    void TakeArrays(BlockPlan& plan, ExtrasData& data) const;
    void Fill(ExtrasData& data) const;

private:
    void AddCamera(const CameraSource& camera);
    void AddProperty(const PropertySource& property);
    std::uint32_t AddChannel(const TrackSource& track, std::uint32_t kind);

    const ClipSource& source_;
    ClockTable& clocks_;
    std::vector<CameraData> cameras_;
    NameLayout camera_names_;
    std::uint32_t switcher_ = TEV2_LOADER::kNone;
    std::vector<PropertyData> properties_;
    NameLayout property_names_;
    NameLayout texts_{0};
    std::uint32_t text_count_ = 0;
    std::vector<Channel> channels_;
    std::vector<const TrackSource*> tracks_; ///< of the channels
    std::size_t words_ = 0;
};

} // namespace TEV2_PLAYBACK
