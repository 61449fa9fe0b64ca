#pragma once

#include "host/import/collada/collada_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace collada_text
{

// Without a place for its notes there may be none.
inline mobu_host::SceneDescription Read(const std::string& document,
                                        std::vector<std::string>* lines = nullptr)
{
    mobu_host::ImportNotes notes;
    mobu_host::SceneDescription scene = mobu_host::collada::ReadScene(document, {}, notes);
    if (lines)
        *lines = notes.Lines();
    else
        EXPECT_TRUE(notes.Lines().empty()) << notes.Lines().front();
    return scene;
}

} // namespace collada_text
