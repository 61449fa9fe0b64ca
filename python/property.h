#pragma once

#include "python/scene.h"
#include "tev2_loader/records/extended_properties.h"

#include <functional>
#include <memory>

namespace tev2_python
{

/// The user properties of a node or an object.
struct Properties
{
    std::shared_ptr<Scene> scene;
    std::shared_ptr<Keeper> keeper; ///< of the node or object
    std::function<TEV2_LOADER::TEV2_EXTENDED_PROPERTIES&()> record;
};

} // namespace tev2_python
