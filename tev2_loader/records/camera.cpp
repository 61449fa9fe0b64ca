#include "tev2_loader/records/camera.h"

#include "tev2_loader/serialisation/arrays.h"

namespace TEV2_LOADER
{

namespace
{

constexpr std::size_t kLeastEffect = 4; ///< an absent one

bool LoadEffects(TEV2_MEMORY_CURSOR& cursor, float version,
                 std::vector<std::unique_ptr<TEV2_CAMERA_EFFECT>>& effects)
{
    effects.clear();
    bool loaded = true;
    const std::uint32_t count = cursor.ReadCount(kLeastEffect);
    for (std::uint32_t index = 0; index < count && !cursor.Failed(); ++index)
    {
        loaded &= LoadOptional(cursor, version, "effects", effects.emplace_back(),
                               TEV2_LOAD_CODE::UnknownEffectType, index);
    }
    return loaded;
}

bool SaveEffects(TEV2_FILE_WRITER& writer, const std::vector<std::unique_ptr<TEV2_CAMERA_EFFECT>>& effects)
{
    SaveCount(writer, effects);
    bool saved = true;
    for (const auto& effect : effects)
        saved &= SaveOptional(writer, effect, &TEV2_CAMERA_EFFECT::GetEffectType);
    return saved;
}

} // namespace

bool TEV2_CAMERA::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    bool loaded = TEV2_POSITIONAL_OBJECT::Load(cursor, version);
    inverseAspect = cursor.ReadF32();
    loaded &= LoadOptional(cursor, version, "distance", distance);
    loaded &= LoadOptional(cursor, version, "fieldOfView", fieldOfView);
    loaded &= LoadOptional(cursor, version, "secondaryRange", secondaryRange);
    loaded &= LoadOptional(cursor, version, "clipRange", clipRange);
    loaded &= LoadEffects(cursor, version, effects);
    return loaded;
}

bool TEV2_CAMERA::Save(TEV2_FILE_WRITER& writer) const
{
    bool saved = TEV2_POSITIONAL_OBJECT::Save(writer);
    saved &= writer.WriteF32(inverseAspect);
    saved &= SaveOptional(writer, distance);
    saved &= SaveOptional(writer, fieldOfView);
    saved &= SaveOptional(writer, secondaryRange);
    saved &= SaveOptional(writer, clipRange);
    saved &= SaveEffects(writer, effects);
    return saved;
}

void TEV2_CAMERA::Update(float delta_time)
{
    UpdateEach(delta_time, distance, fieldOfView, secondaryRange, clipRange);
    for (const auto& effect : effects)
        UpdateEach(delta_time, effect);
}

void TEV2_CAMERA::SetTime(float time)
{
    SetTimeEach(time, distance, fieldOfView, secondaryRange, clipRange);
    for (const auto& effect : effects)
        SetTimeEach(time, effect);
}

} // namespace TEV2_LOADER
