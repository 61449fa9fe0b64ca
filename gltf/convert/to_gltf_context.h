#pragma once

/// What the parts of the conversion to glTF share.

#include "gltf/convert/to_gltf.h"
#include "gltf/document_builder.h"
#include "tev2_loader/names.h"

#include <cstddef>
#include <string>

namespace tev2_gltf
{

using gltf::Json;
using TEV2_LOADER::TEV2;

struct ToGltfContext
{
    std::span<const GltfSource> sources;
    const ToGltfOptions& options;
    gltf::DocumentBuilder& out;
    ConversionReport& report;

    /// The scene that everything but animations comes from.
    const TEV2& Scene() const { return sources.front().scene; }

    /// The time of the pose that nodes, lenses and weights have without animation.
    float RestTime() const;
};

/// `lights[2] "Sun"`; names that are very long are cut.
std::string WhereOf(const char* list, std::size_t index, const TEV2_LOADER::TEV2_ENTITY& record);

/// The name of a record as UTF-8; reports names that UTF-8 cannot express.
std::string NameFor(ToGltfContext& context, const TEV2_LOADER::TEV2_ENTITY& record, const std::string& where);

/// {"name": name}, without empty names.
Json Named(const std::string& name);

} // namespace tev2_gltf
