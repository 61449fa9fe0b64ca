#include "tev2_playback/axes.h"

#include <initializer_list>

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

TEV2_MATRIX_3X4 UpMatrix(TEV2_UP_AXIS axis)
{
    switch (axis)
    {
    case TEV2_UP_AXIS::PlusZ:
        return {{{1, 0, 0, 0}, {0, 0, 1, 0}, {0, -1, 0, 0}}};
    case TEV2_UP_AXIS::MinusZ:
        return {{{1, 0, 0, 0}, {0, 0, -1, 0}, {0, 1, 0, 0}}};
    case TEV2_UP_AXIS::PlusY:
    case TEV2_UP_AXIS::Unknown:
        break;
    }
    return {};
}

TEV2_MATRIX_3X4 MirroredInZ(TEV2_MATRIX_3X4 matrix)
{
    for (float* const element :
         {&matrix.m[0][2], &matrix.m[1][2], &matrix.m[2][0], &matrix.m[2][1], &matrix.m[2][3]})
        *element = -*element;
    return matrix;
}

} // namespace TEV2_PLAYBACK
