#include "tests/support/sample_scenes.h"

#include "tev2_loader/records/camera.h"
#include "tev2_loader/records/camera_man.h"

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

constexpr std::size_t kEmptyPositional = 34;

std::unique_ptr<TEV2_CAMERA_MOTION_BLUR_EFFECT> Blur(float first, float last)
{
    auto effect = std::make_unique<TEV2_CAMERA_MOTION_BLUR_EFFECT>();
    effect->shutterTime = FloatTrack(first, last);
    return effect;
}

TEST(Camera, WritesAspectTracksAndEffects)
{
    TEV2_CAMERA camera;
    EXPECT_EQ(SavedBytes(camera), Bytes().Zeros(kEmptyPositional + 4 + 4 * 4 + 4).data);

    camera.inverseAspect = 0.75f;
    camera.distance = FloatTrack(1, 2);
    camera.fieldOfView = FloatTrack(3, 4);
    camera.secondaryRange =
        SampleTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>(TEV2_FLOAT32_RANGE{1, 2}, {3, 4});
    camera.clipRange = SampleTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>(TEV2_FLOAT32_RANGE{5, 6}, {7, 8});
    camera.effects.push_back(Blur(0.1f, 0.2f));
    camera.effects.push_back(nullptr);
    auto depth = std::make_unique<TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT>();
    depth->focusDistance = FloatTrack(5, 6);
    depth->fNumber = FloatTrack(2, 4);
    camera.effects.push_back(std::move(depth));
    const Bytes expected = Bytes()
                               .Zeros(kEmptyPositional)
                               .F32({0.75f})
                               .Append(FloatTrackBytes(1, 2))
                               .Append(FloatTrackBytes(3, 4))
                               .Append(SampleTrackBytes(1, Bytes().F32({1, 2, 3, 4})))
                               .Append(SampleTrackBytes(1, Bytes().F32({5, 6, 7, 8})))
                               .U32(3)
                               .U32({1, 0})
                               .Append(FloatTrackBytes(0.1f, 0.2f))
                               .U32(0)
                               .U32({1, 1})
                               .Append(FloatTrackBytes(5, 6))
                               .Append(FloatTrackBytes(2, 4));
    EXPECT_EQ(SavedBytes(camera), expected.data);

    TEV2_CAMERA loaded;
    EXPECT_EQ(LoadedBytes(loaded, expected, kVersion), expected.data.size());
    ASSERT_EQ(loaded.effects.size(), 3u);
    EXPECT_EQ(loaded.effects[1], nullptr);
    EXPECT_EQ(SavedBytes(loaded), expected.data);
}

TEST(Camera, ReachesTracksAndEffectsButNotItsBounds)
{
    TEV2_CAMERA camera;
    camera.distance = FloatTrack(1, 2);
    camera.fieldOfView = FloatTrack(1, 2);
    camera.secondaryRange = SampleTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>({}, {});
    camera.clipRange = SampleTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>({}, {});
    camera.bounds = SampleTrack<TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>({}, {});
    auto blur = Blur(1, 2);
    auto depth = std::make_unique<TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT>();
    depth->focusDistance = FloatTrack(1, 2);
    depth->fNumber = FloatTrack(1, 2);
    const TEV2_ANIMATABLE* const moved[] = {camera.distance.get(),       camera.fieldOfView.get(),
                                            camera.secondaryRange.get(), camera.clipRange.get(),
                                            blur->shutterTime.get(),     depth->focusDistance.get(),
                                            depth->fNumber.get()};
    camera.effects.push_back(std::move(blur));
    camera.effects.push_back(nullptr);
    camera.effects.push_back(std::move(depth));

    camera.SetTime(1.5f);
    for (const TEV2_ANIMATABLE* track : moved)
        EXPECT_EQ(track->m_fraction, 0.5f);
    camera.Update(0.5f);
    for (const TEV2_ANIMATABLE* track : moved)
        EXPECT_EQ(track->m_fraction, 0.75f);
    EXPECT_EQ(camera.bounds->m_fraction, 0.0f);
}

TEST(CameraEffect, IsMadeByTypeAndCopiedWithItsTracks)
{
    EXPECT_EQ(TEV2_CAMERA_EFFECT::Create(2), nullptr);
    for (const std::uint32_t type : {0u, 1u})
        EXPECT_EQ(TEV2_CAMERA_EFFECT::Create(type)->GetEffectType(), type);

    const auto blur = Blur(1, 2);
    const std::unique_ptr<TEV2_CAMERA_EFFECT> copy = blur->Clone();
    EXPECT_EQ(SavedBytes(*copy), SavedBytes(*blur));
    copy->SetTime(1.5f);
    EXPECT_EQ(blur->shutterTime->m_fraction, 0.0f);

    TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT depth;
    depth.fNumber = FloatTrack(1, 2);
    EXPECT_EQ(SavedBytes(*depth.Clone()), SavedBytes(depth));
}

TEST(CameraMan, IsOneOptionalTrack)
{
    TEV2_CAMERA_MAN man;
    man.SetTime(1.0f);
    EXPECT_EQ(SavedBytes(man), Bytes().U8({0, 0, 0, 0}).data);
    man.cameraIndex = SampleTrack<TEV2_ANIMATABLE_INT32_RLE>(0, -1);
    const Bytes expected = SampleTrackBytes(8, Bytes().U32({0, 0xFFFFFFFFu}));
    EXPECT_EQ(SavedBytes(man), expected.data);

    TEV2_CAMERA_MAN loaded;
    EXPECT_EQ(LoadedBytes(loaded, expected, kVersion), expected.data.size());
    loaded.SetTime(3.0f);
    EXPECT_EQ(loaded.cameraIndex->GetValue(), -1);
    EXPECT_EQ(LoadedBytes(loaded, Bytes().U32(0), kVersion), 4u);
    EXPECT_EQ(loaded.cameraIndex, nullptr);
}

} // namespace
