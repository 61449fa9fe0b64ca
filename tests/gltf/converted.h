#pragma once

#include "gltf/convert/from_gltf.h"
#include "gltf/convert/to_gltf.h"
#include "tests/gltf/raw_gltf.h"

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tv2_tests
{

/// A document converted; there are no files beside it.
struct FromDocument
{
    explicit FromDocument(std::string glb, tev2_gltf::FromGltfOptions options = {});

    std::vector<std::unique_ptr<TEV2_LOADER::TEV2>> scenes;
    std::vector<std::string> names;
    std::vector<std::string> image_names;
    tev2_gltf::ConversionReport report;
};

/// The names of the codes of a report.
std::set<std::string> CodesOf(const tev2_gltf::ConversionReport& report);

/// A scene saved and loaded; fails the test where a finding is reported.
std::unique_ptr<TEV2_LOADER::TEV2> Reloaded(const TEV2_LOADER::TEV2& scene);

} // namespace tv2_tests
