#pragma once

// The scene formats: the one list of what is read, and how it is recognised.

#include "host/import/import_notes.h"
#include "host/import/import_options.h"
#include "host/import/scene_description.h"
#include "host/import/scene_file.h"

#include <span>
#include <string>
#include <string_view>

namespace mobu_host
{

struct Format
{
    const char* name;
    bool (*recognises)(std::string_view bytes);

    // What the file says. Throws ParseError. Null for one that goes into the host's scene without a description.
    SceneDescription (*read)(const SceneFile& file, const ImportOptions& options, ImportNotes& notes);

    // Empties the host's scene and puts the file's content in its place; returns what else was read. Throws ParseError,
    // with the scene as it was. Null where this build cannot read the format for want of `library`.
    std::vector<std::string> (*import)(const SceneFile& file, const ImportOptions& options,
                                       ImportNotes& notes);
    const char* library;
};

std::span<const Format> Formats();

// The one of these bytes. Null when none recognises them.
const Format* FormatOf(std::string_view bytes);

// Null when there is none of this name.
const Format* FormatNamed(std::string_view name);

// "FBX, BVH, glTF and Collada": those that this build reads.
std::string ReadableFormats();

} // namespace mobu_host
