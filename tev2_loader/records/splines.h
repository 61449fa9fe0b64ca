#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/math/vectors.h"
#include "tev2_loader/records/record_of.h"
#include "tev2_loader/tracks/animatable.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace TEV2_LOADER
{

/// A cubic piece of a spline.
class TEV2_IBEZIER_CURVE : public TEV2_SERIALISABLE_OBJECT
{
public:
    /// The point at a parameter from 0 (start) to 1 (end), metres, at the present time of its tracks.
    virtual TEV2_VECTOR_3 Point(float parameter) const = 0;
};

/// The four control points of a piece that does not move; the tangents are points, not offsets. A spline holds them as
/// plain numbers.
struct TEV2_BEZIER_POINTS
{
    TEV2_VECTOR_3 start;
    TEV2_VECTOR_3 startTangent;
    TEV2_VECTOR_3 endTangent;
    TEV2_VECTOR_3 end;

    auto Components()
    {
        return std::tuple_cat(start.Components(), startTangent.Components(), endTangent.Components(),
                              end.Components());
    }
    auto Components() const
    {
        return std::tuple_cat(start.Components(), startTangent.Components(), endTangent.Components(),
                              end.Components());
    }
};

/// The point of a cubic curve at a parameter from 0 to 1.
TEV2_VECTOR_3 BezierPoint(const TEV2_BEZIER_POINTS& points, float parameter);

/// One piece of a rigid spline as a record of its own.
class TEV2_RIGID_BEZIER_CURVE final : public TEV2_RECORD_OF<TEV2_RIGID_BEZIER_CURVE, TEV2_IBEZIER_CURVE>
{
public:
    TEV2_BEZIER_POINTS points;

    template <typename Self, typename Archive>
    static void Fields(Self& curve, Archive& archive)
    {
        archive.Value("start", curve.points.start);
        archive.Value("startTangent", curve.points.startTangent);
        archive.Value("endTangent", curve.points.endTangent);
        archive.Value("end", curve.points.end);
    }

    TEV2_VECTOR_3 Point(float parameter) const override { return BezierPoint(points, parameter); }
};

/// A piece whose control points move. Null: the origin; of `start`: the end of the piece before.
class TEV2_ANIM_BEZIER_CURVE final : public TEV2_RECORD_OF<TEV2_ANIM_BEZIER_CURVE, TEV2_IBEZIER_CURVE>
{
public:
    std::unique_ptr<TEV2_ANIMATABLE_VECTOR_3> start;
    std::unique_ptr<TEV2_ANIMATABLE_VECTOR_3> startTangent;
    std::unique_ptr<TEV2_ANIMATABLE_VECTOR_3> endTangent;
    std::unique_ptr<TEV2_ANIMATABLE_VECTOR_3> end;

    template <typename Self, typename Archive>
    static void Fields(Self& curve, Archive& archive)
    {
        archive.Track("start", curve.start);
        archive.Track("startTangent", curve.startTangent);
        archive.Track("endTangent", curve.endTangent);
        archive.Track("end", curve.end);
    }

    /// A start that is absent is the origin here; TEV2_IBEZIER_SPLINE::Point knows the piece before.
    TEV2_VECTOR_3 Point(float parameter) const override { return BezierPoint(Points(), parameter); }

    /// The control points at the present time.
    TEV2_BEZIER_POINTS Points() const;
};

/// A chain of cubic pieces, each of which starts where the one before ends.
class TEV2_IBEZIER_SPLINE : public TEV2_SERIALISABLE_OBJECT
{
public:
    /// Makes the spline of a type: 0 rigid, 1 moving; null for any other.
    static std::unique_ptr<TEV2_IBEZIER_SPLINE> Create(std::uint32_t type);

    /// The type in front of the spline in the file.
    virtual std::uint32_t GetType() const = 0;

    virtual std::size_t CurveCount() const = 0;

    /// The control points of a piece below CurveCount() at the present time of its tracks.
    virtual TEV2_BEZIER_POINTS Curve(std::size_t index) const = 0;

    /// The last piece ends where the first one starts.
    bool closed = false;

    template <typename Self, typename Archive>
    static void Fields(Self& spline, Archive& archive)
    {
        archive.Bool("closed", spline.closed);
    }

    static constexpr std::size_t kMostBytes = 96;
    static constexpr TEV2_LOAD_CODE kUnknownType = TEV2_LOAD_CODE::BodyKept;
};

/// A spline whose control points do not move.
class TEV2_RIGID_BEZIER_SPLINE final : public TEV2_RECORD_OF<TEV2_RIGID_BEZIER_SPLINE, TEV2_IBEZIER_SPLINE>
{
public:
    static constexpr std::uint32_t kType = 0;

    std::vector<TEV2_BEZIER_POINTS> curves;

    template <typename Self, typename Archive>
    static void Fields(Self& spline, Archive& archive)
    {
        TEV2_IBEZIER_SPLINE::Fields(spline, archive);
        archive.Values("curves", spline.curves);
    }

    std::uint32_t GetType() const override { return kType; }
    std::size_t CurveCount() const override { return curves.size(); }
    TEV2_BEZIER_POINTS Curve(std::size_t index) const override { return curves[index]; }
};

/// A spline whose control points move.
class TEV2_ANIM_BEZIER_SPLINE final
    : public TEV2_MOVING_RECORD_OF<TEV2_ANIM_BEZIER_SPLINE, TEV2_IBEZIER_SPLINE, TEV2_INTERNAL_ANIM_OBJECT>
{
public:
    static constexpr std::uint32_t kType = 1;

    std::vector<TEV2_ANIM_BEZIER_CURVE> curves;

    template <typename Self, typename Archive>
    static void Fields(Self& spline, Archive& archive)
    {
        TEV2_IBEZIER_SPLINE::Fields(spline, archive);
        archive.Records("curves", spline.curves);
    }

    std::uint32_t GetType() const override { return kType; }
    std::size_t CurveCount() const override { return curves.size(); }
    TEV2_BEZIER_POINTS Curve(std::size_t index) const override;
};

TEV2_CLASSES<TEV2_IBEZIER_SPLINE, TEV2_RIGID_BEZIER_SPLINE, TEV2_ANIM_BEZIER_SPLINE>
ClassesOf(const TEV2_IBEZIER_SPLINE&);

/// Splines, in the axes of a node.
class TEV2_BEZIER_SPLINE_OBJECT final
    : public TEV2_MOVING_RECORD_OF<TEV2_BEZIER_SPLINE_OBJECT, TEV2_POSITIONAL_OBJECT, TEV2_CHUNK_OBJECT,
                                   TEV2_KEPT_BODY>
{
public:
    /// None is null: Save fails otherwise.
    std::vector<std::unique_ptr<TEV2_IBEZIER_SPLINE>> splines;

    template <typename Self, typename Archive>
    static void Fields(Self& object, Archive& archive)
    {
        TEV2_POSITIONAL_OBJECT::Fields(object, archive);
        archive.Layout();
        archive.TypedObjects("splines", object.splines);
    }

    std::uint32_t GetChunkId() const override { return kBezierSplineChunk; }
};

} // namespace TEV2_LOADER
