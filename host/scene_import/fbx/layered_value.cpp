#include "host/scene_import/fbx/layered_value.h"

#include <algorithm>

namespace mobu_host::fbx
{
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

Components LayeredValue::At(double seconds) const
{
    Components value = rest_;
    for (const LayerPart& part : parts_)
    {
        const Components own = Of(part, seconds);
        const double weight = part.layer->WeightAt(seconds);
        const bool adds = part.layer->additive && !part.layer->base && blending_ != Blending::Steps;
        for (std::size_t i = 0; i < value.size(); ++i)
        {
            if (!adds)
                value[i] = weight == 1.0 ? own[i] : value[i] + (own[i] - value[i]) * weight;
            else if (blending_ == Blending::Scale && !part.layer->scales_add)
                value[i] *= 1.0 + (own[i] - 1.0) * weight;
            else
                value[i] += own[i] * weight;
        }
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
                       [](const LayerPart& part) { return !part.layer->base && !part.layer->turns_by_axis; });
}

Matrix3 LayeredValue::TurnAt(double seconds, int order) const
{
    if (!ComposesTurns())
        return EulerTurn(First3(At(seconds)), order);
    Matrix3 turn = EulerTurn(First3(rest_), order);
    for (const LayerPart& part : parts_)
    {
        const Vector own = First3(Of(part, seconds));
        const double weight = part.layer->WeightAt(seconds);
        if (part.layer->base)
            turn = EulerTurn(own, order);
        else if (part.layer->additive)
            turn = turn * EulerTurn(own * weight, order);
        else
            turn = TurnBetween(turn, EulerTurn(own, order), weight);
    }
    return turn;
}

} // namespace mobu_host::fbx
