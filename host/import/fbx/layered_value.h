#pragma once

#include "host/import/fbx/curve.h"
#include "host/math/affine.h"

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

namespace mobu_host::fbx
{

using Components = std::array<double, 4>;

inline Vector First3(const Components& components)
{
    return {components[0], components[1], components[2]};
}
using CurvePointer = std::shared_ptr<const Curve>;

/// An animation layer over others; the muted ones of a file are left out.
struct Layer
{
    enum class Mode
    {
        Adds,
        Covers, // whatever its weight
        Mixes   // covers by its weight
    };
    Mode mode = Mode::Adds;
    bool base = false;          // the lowest: not blended
    bool turns_by_axis = false; // adds angles instead of turns
    bool scales_add = false;    // instead of multiplying
    double weight = 1.0;        // 0 to 1
    CurvePointer weight_curve;  // in percent, in place of `weight`; may be null

    double WeightAt(double seconds) const;
    /// Whether a rotation goes onto the ones below as a turn.
    bool ComposesTurns() const { return !base && !turns_by_axis && mode != Mode::Covers; }
};

/// What a layer says of one property.
struct LayerPart
{
    std::shared_ptr<const Layer> layer;
    std::array<CurvePointer, 4> curves; // null: the component has its value in `constants`
    Components constants{};
};

enum class Blending
{
    Numbers,
    Steps, // booleans, enumerations: layers override
    Turn,
    Scale
};

/// A property over one take: what it is without animation, and the layers on it from the lowest up.
class LayeredValue
{
public:
    LayeredValue(const Components& rest, Blending blending) : rest_(rest), blending_(blending) {}

    void Add(LayerPart part) { parts_.push_back(std::move(part)); }

    Components At(double seconds) const;
    /// Of angles, in the given rotation order.
    Matrix3 TurnAt(double seconds, int order) const;
    bool IsConstant() const;
    /// Whether TurnAt is more than the turn of At.
    bool ComposesTurns() const;

private:
    Components Of(const LayerPart& part, double seconds) const;
    double Blend(const Layer& layer, double below, double own, double weight) const; // of one component

    Components rest_;
    Blending blending_;
    std::vector<LayerPart> parts_;
};

} // namespace mobu_host::fbx
