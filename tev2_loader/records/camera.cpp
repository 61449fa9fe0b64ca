#include "tev2_loader/records/camera.h"

#include "tev2_loader/io/arrays.h"

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
        if (!cursor.TakeMemory(sizeof effects[0]))
            return false;
        loaded &= LoadOptionalTrack(cursor, version, "effects", effects.emplace_back(),
                                    TEV2_LOAD_CODE::UnknownEffectType, index);
    }
    return loaded;
}

bool SaveEffects(TEV2_FILE_WRITER& writer, const std::vector<std::unique_ptr<TEV2_CAMERA_EFFECT>>& effects)
{
    SaveCount(writer, effects);
    bool saved = true;
    for (const auto& effect : effects)
        saved &= SaveOptionalTrack(writer, effect, &TEV2_CAMERA_EFFECT::GetEffectType);
    return saved;
}

} // namespace

bool TEV2_CAMERA::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    bool loaded = TEV2_POSITIONAL_OBJECT::Load(cursor, version);
    inverseAspect = cursor.ReadF32();
    loaded &= LoadOptionalTrack(cursor, version, "distance", distance);
    loaded &= LoadOptionalTrack(cursor, version, "fieldOfView", fieldOfView);
    loaded &= LoadOptionalTrack(cursor, version, "secondaryRange", secondaryRange);
    loaded &= LoadOptionalTrack(cursor, version, "clipRange", clipRange);
    loaded &= LoadEffects(cursor, version, effects);
    return loaded;
}

bool TEV2_CAMERA::Save(TEV2_FILE_WRITER& writer) const
{
    bool saved = TEV2_POSITIONAL_OBJECT::Save(writer);
    saved &= writer.WriteF32(inverseAspect);
    saved &= SaveOptionalTrack(writer, distance);
    saved &= SaveOptionalTrack(writer, fieldOfView);
    saved &= SaveOptionalTrack(writer, secondaryRange);
    saved &= SaveOptionalTrack(writer, clipRange);
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
