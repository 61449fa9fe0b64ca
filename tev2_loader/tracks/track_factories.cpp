#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/quaternion_tracks.h"
#include "tev2_loader/tracks/stepped_integer_track.h"

// Which tracks belong to which family.

namespace TEV2_LOADER
{

std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> TEV2_ANIMATABLE_FLOAT32::Create(std::uint32_t kind)
{
    return CreateTrack<TEV2_ANIMATABLE_FLOAT32, TEV2_ANIMATABLE_FLOAT32_LINEAR>(kind);
}

std::unique_ptr<TEV2_ANIMATABLE_FLOAT32_RANGE> TEV2_ANIMATABLE_FLOAT32_RANGE::Create(std::uint32_t kind)
{
    return CreateTrack<TEV2_ANIMATABLE_FLOAT32_RANGE, TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>(kind);
}

std::unique_ptr<TEV2_ANIMATABLE_COLOUR> TEV2_ANIMATABLE_COLOUR::Create(std::uint32_t kind)
{
    return CreateTrack<TEV2_ANIMATABLE_COLOUR, TEV2_ANIMATABLE_COLOUR_LINEAR>(kind);
}

std::unique_ptr<TEV2_ANIMATABLE_VECTOR_2> TEV2_ANIMATABLE_VECTOR_2::Create(std::uint32_t kind)
{
    return CreateTrack<TEV2_ANIMATABLE_VECTOR_2, TEV2_ANIMATABLE_VECTOR_2_LINEAR>(kind);
}

std::unique_ptr<TEV2_ANIMATABLE_VECTOR_3> TEV2_ANIMATABLE_VECTOR_3::Create(std::uint32_t kind)
{
    return CreateTrack<TEV2_ANIMATABLE_VECTOR_3, TEV2_ANIMATABLE_VECTOR_3_LINEAR>(kind);
}

std::unique_ptr<TEV2_ANIMATABLE_VECTOR_4> TEV2_ANIMATABLE_VECTOR_4::Create(std::uint32_t kind)
{
    return CreateTrack<TEV2_ANIMATABLE_VECTOR_4, TEV2_ANIMATABLE_VECTOR_4_LINEAR>(kind);
}

std::unique_ptr<TEV2_ANIMATABLE_QUATERNION> TEV2_ANIMATABLE_QUATERNION::Create(std::uint32_t kind)
{
    return CreateTrack<TEV2_ANIMATABLE_QUATERNION, TEV2_ANIMATABLE_QUATERNION_LERP,
                       TEV2_ANIMATABLE_QUATERNION_SLERP>(kind);
}

std::unique_ptr<TEV2_ANIMATABLE_RECTF> TEV2_ANIMATABLE_RECTF::Create(std::uint32_t kind)
{
    return CreateTrack<TEV2_ANIMATABLE_RECTF, TEV2_ANIMATABLE_RECTF_LINEAR>(kind);
}

std::unique_ptr<TEV2_ANIMATABLE_INT32> TEV2_ANIMATABLE_INT32::Create(std::uint32_t kind)
{
    return CreateTrack<TEV2_ANIMATABLE_INT32, TEV2_ANIMATABLE_INT32_RLE>(kind);
}

std::unique_ptr<TEV2_ANIMATABLE_BINORMAL_TANGENT> TEV2_ANIMATABLE_BINORMAL_TANGENT::Create(std::uint32_t kind)
{
    return CreateTrack<TEV2_ANIMATABLE_BINORMAL_TANGENT, TEV2_ANIMATABLE_BINORMAL_TANGENT_LINEAR>(kind);
}

std::unique_ptr<TEV2_ANIMATABLE_BOUNDING_BOX> TEV2_ANIMATABLE_BOUNDING_BOX::Create(std::uint32_t kind)
{
    return CreateTrack<TEV2_ANIMATABLE_BOUNDING_BOX, TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>(kind);
}

} // namespace TEV2_LOADER
