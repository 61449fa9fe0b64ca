#include "host/sdk/model_space.h"

#include "host/sdk/property_state.h"

#include <algorithm>

namespace mobu_host
{

RotationRule RuleOf(FBModel& model)
{
    RotationRule rule;
    if (SdkAccess::Current<bool>(model.RotationActive))
    {
        rule.order = SdkAccess::Current<FBModelRotationOrder>(model.RotationOrder);
        rule.pre = SdkAccess::Current<FBVector3d>(model.PreRotation);
        rule.post = SdkAccess::Current<FBVector3d>(model.PostRotation);
    }
    return rule;
}

void DriveTransform(FBModel& model, const LocalTransform& transform)
{
    SdkAccess::Drive(model.Translation, transform.translation);
    SdkAccess::Drive(model.Rotation, transform.rotation);
    SdkAccess::Drive(model.Scaling, transform.scaling);
    SdkAccess::Space(model).matrix_driven = false;
}

void DriveMatrix(FBModel& model, const FBMatrix& matrix)
{
    auto& space = SdkAccess::Space(model);
    std::copy_n(static_cast<const double*>(matrix), 16, space.local);
    DriveTransform(model, Decompose(space.local, RuleOf(model)));
    space.matrix_driven = true;
}

void RestoreTransform(FBModel& model)
{
    SdkAccess::Restore(model.Translation);
    SdkAccess::Restore(model.Rotation);
    SdkAccess::Restore(model.Scaling);
    auto& space = SdkAccess::Space(model);
    space.matrix_driven = space.rest != nullptr;
    if (space.rest)
        std::copy_n(space.rest->data(), 16, space.local);
}

void UpdateMatrices(FBModel& model)
{
    auto& space = SdkAccess::Space(model);
    if (!space.matrix_driven)
        Compose({SdkAccess::Current<FBVector3d>(model.Translation),
                 SdkAccess::Current<FBVector3d>(model.Rotation),
                 SdkAccess::Current<FBVector3d>(model.Scaling)},
                RuleOf(model), space.local);
    if (space.parent)
        Multiply(space.local, SdkAccess::Space(*space.parent).global, space.global);
    else
        std::copy_n(space.local, 16, space.global);
}

} // namespace mobu_host
