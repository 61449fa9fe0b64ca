#include "tev2_loader/records/splines.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

template struct TEV2_RECORD_CODE<TEV2_RIGID_BEZIER_CURVE>;
template struct TEV2_RECORD_CODE<TEV2_ANIM_BEZIER_CURVE>;
template struct TEV2_RECORD_CODE<TEV2_RIGID_BEZIER_SPLINE>;
template struct TEV2_RECORD_CODE<TEV2_ANIM_BEZIER_SPLINE>;
template struct TEV2_RECORD_CODE<TEV2_BEZIER_SPLINE_OBJECT>;

namespace
{

TEV2_VECTOR_3 PresentPoint(const std::unique_ptr<TEV2_ANIMATABLE_VECTOR_3>& track)
{
    return track ? track->GetValue() : TEV2_VECTOR_3{};
}

} // namespace

TEV2_VECTOR_3 BezierPoint(const TEV2_BEZIER_POINTS& points, float parameter)
{
    const float rest = 1.0f - parameter;
    return points.start * (rest * rest * rest) + points.startTangent * (3.0f * rest * rest * parameter) +
           points.endTangent * (3.0f * rest * parameter * parameter) +
           points.end * (parameter * parameter * parameter);
}

TEV2_BEZIER_POINTS TEV2_ANIM_BEZIER_CURVE::Points() const
{
    return {PresentPoint(start), PresentPoint(startTangent), PresentPoint(endTangent), PresentPoint(end)};
}

std::unique_ptr<TEV2_IBEZIER_SPLINE> TEV2_IBEZIER_SPLINE::Create(std::uint32_t type)
{
    return decltype(ClassesOf(std::declval<TEV2_IBEZIER_SPLINE&>()))::Create(type);
}

TEV2_BEZIER_POINTS TEV2_ANIM_BEZIER_SPLINE::Curve(std::size_t index) const
{
    TEV2_BEZIER_POINTS points = curves[index].Points();
    if (!curves[index].start && index > 0)
        points.start = PresentPoint(curves[index - 1].end);
    return points;
}

} // namespace TEV2_LOADER
