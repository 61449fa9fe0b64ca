#pragma once

#include "tev2_loader/status.h"
#include "tools/tv2/option_row.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace tv2
{

// Which scenes a batch exports, and where to. Reads folders, writes nothing. Paths are bytes as the system takes them.

/// Part `number` of `count` equal parts, from 1.
struct Shard
{
    std::size_t number = 1;
    std::size_t count = 1;
};

/// Takes "2/8". Returns the reason for refusing a text, or an empty one.
std::string TakeShard(const std::string& text, Shard& shard);

struct BatchQuestion
{
    std::vector<std::string> inputs; ///< files, folders and wildcards, as given
    std::string folder;              ///< for the output
    bool recursive = false;          ///< also what is below the folders among the inputs
    Shard shard;
    bool spaces_to_underscores = true; ///< as the export's own option
    bool takes_name_files = false;     ///< --all-takes, or --take that may choose several
};

/// "--recursive" and "--shard".
std::vector<OptionRow> BatchSceneOptions(BatchQuestion& question);

/// One scene, and the OUTPUT of its export.
struct BatchScene
{
    std::string scene;  ///< the input as given, or what is below it
    std::string output; ///< FOLDER/sub/walk.tv2; its folder may be missing
    std::string name; ///< the output below the folder, with "/": "sub/walk.tv2"; no two scenes have the same

    /// Indices in BatchScenes::all of scenes whose files might have the same names, depending on takes: "walk.bvh" with
    /// a take "turn" and "walk_turn.bvh". Usually empty.
    std::vector<std::size_t> rivals{};
};

struct BatchScenes
{
    std::vector<BatchScene> all; ///< of the whole batch, sorted by the bytes of `scene`
    std::vector<std::size_t>
        chosen; ///< indices of those in this shard, ascending: number - 1, + count, + 2 count ...
    std::size_t doubled = 0;     ///< that several inputs named, counted once
    std::size_t passed_over = 0; ///< files in folders and of wildcards that are no scenes by their extension
    std::vector<std::string>
        unreadable;                 ///< folders, one line each with the cause: failures, the rest is exported
    std::vector<std::string> notes; ///< one line each, such as folders without a scene
};

/// Finds the scenes of a batch.
///
/// - A path that exists is what it is: a folder gives the scenes in it (by extension, see host/import/formats.h), a
///   file is a scene whatever its name. A path that does not exist is a wildcard when it has one (text/wildcard.h);
///   otherwise it stays in the list, and its export fails.
/// - Wildcards: `*`, `?`, `[a-z]`, and `**` for any number of folders. They match scenes, and folders like those given.
///   Names that begin with a dot only match a pattern that does, and are passed over in folders.
/// - OUTPUT is relative to the folder given, to the folders in front of the first wildcard, or to the file's folder.
/// - A file of one name in one folder is found once, whatever the spelling of its path; the first input that names it
///   decides on its output. Links with names of their own are scenes of their own. Linked folders are entered once.
/// - The output folder is not searched when it is below an input.
///
/// Fails, naming the cause: a wildcard without a match, no scene at all, two scenes with one output, an output that is
/// one of the scenes.
TEV2_LOADER::Status FindScenes(const BatchQuestion& question, BatchScenes& found);

/// Of scenes, by their indices in BatchScenes::all: the files that their exports would write, from children with
/// --dry-run. Of a scene whose export would fail: none.
using FilesOfScenes = std::map<std::size_t, std::vector<std::string>>;

/// Indices in `found.all` of the scenes whose files FindClashes compares: those chosen that have rivals before them in
/// the batch, and these rivals.
std::vector<std::size_t> ScenesToCompare(const BatchScenes& found);

/// For each of `found.chosen` why it must not be exported: a file of it would also be written by a scene that comes
/// before it in the batch (of any shard), which the reason names.
std::vector<std::string> FindClashes(const BatchScenes& found, const FilesOfScenes& files);

} // namespace tv2
