#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tv2
{

/// What the user asked for on the command line.
struct ExportRequest
{
    std::string scene;
    std::string output;
    double scene_rate = 0.0;               ///< frames a second of the scene; 0: its own
    std::vector<std::string> source_files; ///< further files that the scene was read from
    std::string rate;               ///< samples a second as the user wrote them; empty: the scene's rate
    std::optional<int> start_frame; ///< frames of the scene's transport rate
    std::optional<int> end_frame;
    bool all_takes = false;
    std::string take;                ///< empty: the first one
    std::vector<std::string> select; ///< long names; empty: the whole scene
    bool spaces_to_underscores = true;
    bool keep_positive_z = true;
    bool remove_namespace = true;
    bool disable_constraints = false;
    bool overwrite_read_only = false;
};

} // namespace tv2
