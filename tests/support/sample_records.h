#pragma once

#include "tev2_loader/tev2.h"

#include <string_view>

namespace tv2_tests
{

// Gives every field of a record a value of its own: tracks have two keys, optional records are there, no array is
// empty.

void Fill(TEV2_LOADER::TEV2_EXTENDED_PROPERTIES& properties);
void Fill(TEV2_LOADER::TEV2_CAMERA& camera);
void Fill(TEV2_LOADER::TEV2_AMBIENT_LIGHT& light);
void Fill(TEV2_LOADER::TEV2_GLOBAL_LIGHT_TINT& light);
void Fill(TEV2_LOADER::TEV2_POINT_LIGHT& light);
void Fill(TEV2_LOADER::TEV2_DIRECTIONAL_LIGHT& light);
void Fill(TEV2_LOADER::TEV2_SPOT_LIGHT& light);
void Fill(TEV2_LOADER::TEV2_BITMAP_MATERIAL_MAP& map);
void Fill(TEV2_LOADER::TEV2_NORMAL_MATERIAL_MAP& map);
void Fill(TEV2_LOADER::TEV2_STANDARD_MATERIAL& material);
void Fill(TEV2_LOADER::TEV2_SHADER_MATERIAL& material);
void Fill(TEV2_LOADER::TEV2_RIGID& mesh);
void Fill(TEV2_LOADER::TEV2_ANIM_MESH& mesh);
void Fill(TEV2_LOADER::TEV2_MORPH_MESH& mesh);
void Fill(TEV2_LOADER::TEV2_WEIGHTED_MESH& mesh);
void Fill(TEV2_LOADER::TEV2_BEZIER_SPLINE_OBJECT& object);
void Fill(TEV2_LOADER::TEV2_HELPER& helper);
void Fill(TEV2_LOADER::TEV2_INSTANCE& instance);
void Fill(TEV2_LOADER::TEV2_GEOM_INSTANCE& instance);
void Fill(TEV2_LOADER::TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS& instance);
void Fill(TEV2_LOADER::TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS& instance);
void Fill(TEV2_LOADER::TEV2_XREF<15>& reference);
void Fill(TEV2_LOADER::TEV2_XREF<20>& reference);
void Fill(TEV2_LOADER::TEV2_XREF_OBJECT& object);
void Fill(TEV2_LOADER::TEV2_XREF_SPEEDTREE& tree);

/// The fields of a placed object, with its own name.
void FillPlaced(TEV2_LOADER::TEV2_POSITIONAL_OBJECT& object, std::u16string_view name);

/// A filled record of a class, on the heap.
template <typename Record>
std::unique_ptr<Record> Filled()
{
    auto record = std::make_unique<Record>();
    Fill(*record);
    return record;
}

} // namespace tv2_tests
