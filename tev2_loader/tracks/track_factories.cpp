#include "tev2_loader/tracks/visit_keys.h"

#include <type_traits>

namespace TEV2_LOADER
{

namespace
{

template <typename Family, typename Track>
void CreateWhenOfKind(std::uint32_t kind, std::unique_ptr<Family>& track)
{
    if constexpr (std::is_base_of_v<Family, Track>)
    {
        if (kind == Track::kType)
            track = std::make_unique<Track>();
    }
}

template <typename Family, typename... Tracks>
std::unique_ptr<Family> CreateOneOf(TEV2_CLASSES<TEV2_ANIMATABLE, Tracks...>, std::uint32_t kind)
{
    std::unique_ptr<Family> track;
    (CreateWhenOfKind<Family, Tracks>(kind, track), ...);
    return track;
}

template <typename Family, typename... Tracks>
bool HasOneOf(TEV2_CLASSES<TEV2_ANIMATABLE, Tracks...>, std::uint32_t kind)
{
    return ((std::is_base_of_v<Family, Tracks> && kind == Tracks::kType) || ...);
}

} // namespace

template <typename Family, typename ValueType>
std::unique_ptr<Family> TrackOf<Family, ValueType>::Create(std::uint32_t kind)
{
    return CreateOneOf<Family>(AllTracks(), kind);
}

template <typename Family, typename ValueType>
bool TrackOf<Family, ValueType>::Has(std::uint32_t kind)
{
    return HasOneOf<Family>(AllTracks(), kind);
}

template class TrackOf<TEV2_ANIMATABLE_FLOAT32, float>;
template class TrackOf<TEV2_ANIMATABLE_FLOAT32_RANGE, TEV2_FLOAT32_RANGE>;
template class TrackOf<TEV2_ANIMATABLE_COLOUR, TEV2_COLOUR>;
template class TrackOf<TEV2_ANIMATABLE_VECTOR_2, TEV2_VECTOR_2>;
template class TrackOf<TEV2_ANIMATABLE_VECTOR_3, TEV2_VECTOR_3>;
template class TrackOf<TEV2_ANIMATABLE_VECTOR_4, TEV2_VECTOR_4>;
template class TrackOf<TEV2_ANIMATABLE_QUATERNION, TEV2_QUATERNION>;
template class TrackOf<TEV2_ANIMATABLE_RECTF, TEV2_RECTF>;
template class TrackOf<TEV2_ANIMATABLE_INT32, std::int32_t>;
template class TrackOf<TEV2_ANIMATABLE_BINORMAL_TANGENT, TEV2_BINORMAL_TANGENT>;
template class TrackOf<TEV2_ANIMATABLE_BOUNDING_BOX, TEV2_BOUNDING_BOX>;

} // namespace TEV2_LOADER
