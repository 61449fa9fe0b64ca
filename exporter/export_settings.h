#pragma once

#include "exporter/base/export_context.h"
#include "exporter/base/export_options.h"

#include <cstdint>
#include <vector>

namespace tev2_exporter
{

enum SamplingChoice : std::int32_t
{
    kSamplingPal = 0,
    kSamplingNtsc = 1,
    kSamplingCustom = 2
};

enum KeyFrameChoice : std::int32_t
{
    kExportAllKeys = 0,
    kCustomKeys = 1
};

enum TakesChoice : std::int32_t
{
    kCurrentTakeOnly = 0,
    kAllTakes = 1
};

/// What the dialog shows and remembers from one run to the next. Frames count at the transport rate.
struct ExporterSettings
{
    std::int32_t sampling_choice = kSamplingPal;
    std::int32_t key_frame_choice = kExportAllKeys;
    std::int32_t takes_choice = kCurrentTakeOnly;
    std::int32_t start_key = 0;
    std::int32_t end_key = 0;
    float frame_rate = 50.0f;            ///< samples a second
    ExportFlags flags;                   ///< of the check boxes
    std::int32_t take_start_frame = -10; ///< these three come from the scene before each showing
    std::int32_t take_end_frame = 120;
    double transport_rate = 0.0;
    std::int32_t dialog_x = 100; ///< pixels
    std::int32_t dialog_y = 100;
};

/// Reads the current take's first and last frame, rounded to the nearest, and the transport rate.
void RefreshFromScene(ExportContext& context, ExporterSettings& settings);

/// Reads the user's stored settings. A missing value leaves its field unchanged, except the start and end key (the
/// take's frames then) and the frame rate (the transport rate). A stored text that is not a number counts as 0. A check
/// box is set exactly when its number is 1.
void LoadSettings(ExporterSettings& settings);

/// Stores all values. A store that cannot be opened is silently skipped.
void SaveSettings(const ExporterSettings& settings);

/// Whether to offer "*.tv2" in the save dialog: true unless the stored settings say otherwise.
bool WantsAsteriskExtension();

/// The options for the export that the settings describe. `Cancelled` is 1 when the range is reversed (whether it is
/// used or not) or the rate is not above 0.
ExportOptions FillOptionsFromSettings(const ExporterSettings& settings);

} // namespace tev2_exporter
