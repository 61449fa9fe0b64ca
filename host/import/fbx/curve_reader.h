#pragma once

#include "host/import/fbx/arrays.h"
#include "host/import/fbx/curve.h"
#include "host/import/fbx/record_tree.h"

#include <optional>

namespace mobu_host::fbx
{

/// Takes the keys of curves out of their records, in both forms that the format has had. One serves many curves.
class CurveReader
{
public:
    /// An AnimationCurve object of 7.x. Throws ParseError when its arrays do not fit together.
    Curve ReadArrays(const Record& record);

    /// A Channel of 6.x with its list of keys; an empty curve where there is none. Throws ParseError for a list that
    /// cannot be taken apart.
    Curve ReadKeyList(const Record& channel);

private:
    ArrayReader arrays_;
    std::vector<std::int64_t> times_;
    std::vector<double> values_;
    std::vector<std::int32_t> flags_;
    std::vector<float> data_;
    std::vector<std::int32_t> counts_;
};

} // namespace mobu_host::fbx
