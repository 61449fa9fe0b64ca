#pragma once

/// The scene formats: the one table of what is read. A new format is a reader, a row here and a section of
/// docs/scene_files.md.

#include "host/import/base/import_notes.h"
#include "host/import/base/import_options.h"
#include "host/import/base/scene_description.h"
#include "host/import/base/scene_file.h"

#include <span>
#include <string>
#include <string_view>

namespace mobu_host
{

struct Format
{
    const char* name;

    /// By which its files are found in folders, each with a blank after it: ".gltf .glb ".
    std::string_view extensions;

    /// Whether bytes are of this format, by how they begin.
    bool (*sniff)(std::string_view bytes);

    /// What the file says. Throws ParseError. Null where this build lacks `library`.
    SceneDescription (*read)(const SceneFile& file, const ImportOptions& options, ImportNotes& notes);

    const char* library = nullptr;
};

std::span<const Format> Formats();

/// The one of these bytes. Null when none recognises them.
const Format* FormatOf(std::string_view bytes);

/// Those of all formats, each with a blank after it.
std::string SceneExtensions();

/// Whether the name of a file ends as those of scenes do, in any case. Says nothing about what is in it.
bool IsNamedAsScene(std::string_view file_name);

/// Null when there is none of this name.
const Format* FormatNamed(std::string_view name);

/// Those that this build reads, for messages: "FBX, BVH, glTF and Collada".
std::string ReadableFormats(std::string_view before_last = " and ");

} // namespace mobu_host
