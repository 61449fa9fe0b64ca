#pragma once

#include "tev2_loader/tev2.h"
#include "viewer/json_text.h"
#include "viewer/words.h"

#include <cstdint>
#include <string>

namespace tev2_viewer
{

/// What a page shows, as JSON: a description, and "words", the numbers in Base64. viewer/page/data.js reads it and says
/// what is where. The scenes must not change until everything is written.
class PageData
{
public:
    explicit PageData(bool with_meshes) : with_meshes_(with_meshes) {}

    /// `title` is UTF-8, for people.
    void Add(const TEV2_LOADER::TEV2& scene, const std::string& title);

    /// Bytes that Write appends.
    std::uint64_t Length() const;

    void Write(std::string& text) const;

private:
    JsonText scenes_;
    Words words_;
    bool with_meshes_;
};

} // namespace tev2_viewer
