#pragma once

namespace tev2_exporter
{

/// The plug-in's entry for scripts: exports the open scene without a dialog. Frames count at the transport rate; with
/// `export_all_keys` the whole take is exported and the frames are ignored. Returns 1 when the run completed, 0 when a
/// conversion failed or memory ran out.
using ScriptEntry = unsigned(const char* path, int start_frame, int end_frame, int fps,
                             bool spaces_to_underscores, bool keep_positive_z, bool remove_namespace,
                             bool disable_constraints, bool export_all_keys, bool all_takes);

/// Name under which the module exports it.
inline constexpr const char* kScriptEntryName = "python_export_tv2";

/// Whether the exports that follow, through the script entry or the dialog, drop keys that repeat their neighbours;
/// they do until this is called with false. A file with every key is the baseline for what key reduction costs.
using KeyReductionSwitch = void(bool reduce);

/// Name under which the module exports it.
inline constexpr const char* kKeyReductionSwitchName = "tv2_set_key_reduction";

} // namespace tev2_exporter
