#pragma once

/// The text of <user_properties> in the <extra> of a node, as tools of the FCOLLADA profile write it: one "name =
/// value" a line.

#include "host/import/base/scene_description.h"
#include "host/import/collada/xml_document.h"

#include <vector>

namespace mobu_host::collada
{

/// true and false are booleans, whole numbers integers, other numbers floating point, all else text. Lines that say
/// something else are left out; `left_out` is set then.
std::vector<PropertyDescription> ReadUserProperties(Element node, bool& left_out);

} // namespace mobu_host::collada
