#include "host/import/fbx/layered_value.h"

#include <algorithm>
#include <cmath>

namespace mobu_host::fbx
{
namespace
{

// value^exponent for exponents from 0 to 1, the sign kept. By square roots, which are exact everywhere.
double Power(double value, double exponent)
{
    if (exponent >= 1.0)
        return value;
    double power = 1.0;
    double root = std::abs(value);
    for (double left = exponent, bit = 0.5; left > 0.0 && bit > 0x1p-53; bit *= 0.5)
    {
        root = std::sqrt(root);
        if (left < bit)
            continue;
        left -= bit;
        power *= root;
    }
    return exponent > 0.0 ? std::copysign(power, value) : 1.0;
}

} // namespace

double Layer::WeightAt(double seconds) const
{
    if (base)
        return 1.0;
    return weight_curve ? std::clamp(weight_curve->At(seconds) / 100.0, 0.0, 1.0) : weight;
}

Components LayeredValue::Of(const LayerPart& part, double seconds) const
{
    Components value = part.constants;
    for (std::size_t i = 0; i < value.size(); ++i)
        if (part.curves[i])
            value[i] = part.curves[i]->At(seconds);
    return value;
}

double LayeredValue::Blend(const Layer& layer, double below, double own, double weight) const
{
    if (layer.base || layer.mode == Layer::Mode::Covers)
        return own;
    const bool adds = layer.mode == Layer::Mode::Adds && blending_ != Blending::Steps;
    if (blending_ == Blending::Scale && !layer.scales_add)
        return (adds ? below : Power(below, 1.0 - weight)) * Power(own, weight);
    if (adds)
        return below + own * weight;
    return weight == 1.0 ? own : below + (own - below) * weight;
}

Components LayeredValue::At(double seconds) const
{
    Components value = rest_;
    for (const LayerPart& part : parts_)
    {
        const Components own = Of(part, seconds);
        const double weight = part.layer->WeightAt(seconds);
        for (std::size_t i = 0; i < value.size(); ++i)
            value[i] = Blend(*part.layer, value[i], own[i], weight);
    }
    return value;
}

bool LayeredValue::IsConstant() const
{
    return std::all_of(parts_.begin(), parts_.end(),
                       [](const LayerPart& part)
                       {
                           return !part.layer->weight_curve &&
                                  std::all_of(part.curves.begin(), part.curves.end(),
                                              [](const CurvePointer& curve)
                                              { return !curve || curve->IsConstant(); });
                       });
}

bool LayeredValue::ComposesTurns() const
{
    return std::any_of(parts_.begin(), parts_.end(),
                       [](const LayerPart& part) { return part.layer->ComposesTurns(); });
}

Matrix3 LayeredValue::TurnAt(double seconds, int order) const
{
    if (!ComposesTurns())
        return EulerTurn(First3(At(seconds)), order);
    Vector angles = First3(rest_);
    Matrix3 turn;
    bool as_turn = false; // what is known so far is `turn`, else `angles`
    for (const LayerPart& part : parts_)
    {
        const Layer& layer = *part.layer;
        const Vector own = First3(Of(part, seconds));
        const double weight = layer.WeightAt(seconds);
        if (layer.ComposesTurns())
        {
            const Matrix3 below = as_turn ? turn : EulerTurn(angles, order);
            const Matrix3 own_turn = EulerTurn(own, order);
            turn = layer.mode == Layer::Mode::Adds ? below * TurnBetween({}, own_turn, weight)
                                                   : TurnBetween(below, own_turn, weight);
            as_turn = true;
            continue;
        }
        if (as_turn)
            angles = EulerAngles(turn, order);
        for (std::size_t i = 0; i < angles.size(); ++i)
            angles[i] = Blend(layer, angles[i], own[i], weight);
        as_turn = false;
    }
    return as_turn ? turn : EulerTurn(angles, order);
}

} // namespace mobu_host::fbx
