#pragma once

#include "tev2_loader/records/lit_object.h"
#include "tev2_loader/records/matrix_hierarchy.h"
#include "tev2_loader/records/positional_object.h"
#include "tev2_loader/records/unparsed_record.h"

#include <vector>

namespace TEV2_LOADER
{

// Shapes. The bodies of all of them are kept as bytes.

class TEV2_GEOM_OBJECT : public TEV2_POSITIONAL_OBJECT, public TEV2_LIT_OBJECT
{
};

class TEV2_TRI_OBJECT : public TEV2_GEOM_OBJECT
{
};

class TEV2_RIGID final : public UnparsedRecord<kRigidChunk, TEV2_TRI_OBJECT, TEV2_CHUNK_OBJECT>
{
};

class TEV2_ANIM_MESH final : public UnparsedRecord<kAnimMeshChunk, TEV2_TRI_OBJECT, TEV2_CHUNK_OBJECT>
{
};

class TEV2_MORPH_MESH final : public UnparsedRecord<kMorphMeshChunk, TEV2_TRI_OBJECT, TEV2_CHUNK_OBJECT>
{
};

/// A mesh that follows the skeleton.
class TEV2_WEIGHTED_MESH final : public UnparsedRecord<kWeightedMeshChunk, TEV2_TRI_OBJECT, TEV2_CHUNK_OBJECT>
{
public:
    /// The skeleton that the mesh follows and the inverse world matrix of each of its nodes at the scene's
    /// start. Not owned; null until bound. The root binds its meshes whenever it evaluates.
    const TEV2_MATRIX_HIERARCHY* hierarchy = nullptr;
    const std::vector<TEV2_MATRIX_3X4>* inverseBindMatrices = nullptr;

    void Bind(const TEV2_MATRIX_HIERARCHY& skeleton,
              const std::vector<TEV2_MATRIX_3X4>& inverse_bind_matrices)
    {
        hierarchy = &skeleton;
        inverseBindMatrices = &inverse_bind_matrices;
    }
};

} // namespace TEV2_LOADER
