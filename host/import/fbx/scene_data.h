#pragma once

/// The third layer, while it is made: the scene's description, and what transforms are evaluated from.

#include "host/import/base/import_notes.h"
#include "host/import/fbx/document.h"
#include "host/import/fbx/layered_value.h"
#include "host/import/fbx/transform_evaluator.h"

#include <memory>

namespace mobu_host::fbx
{

struct SceneData
{
    double centimetres = 1.0; // one unit of length
    SceneDescription scene;
    std::shared_ptr<TransformEvaluator> transforms =
        std::make_shared<TransformEvaluator>(); // node i is model i; takes in the order of the scene's
};

} // namespace mobu_host::fbx
