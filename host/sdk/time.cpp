#include <cmath>
#include <cstdlib>
#include <limits>

#include <fbsdk/fbsdk.h>

#include "host/sdk/frame_rates.h"

namespace
{

constexpr kLongLong kTicksPerSecond = 46'186'158'000;
constexpr kLongLong kLastTick = std::numeric_limits<kLongLong>::max();

kLongLong NearestTick(double ticks)
{
    if (std::isnan(ticks))
        return 0;
    if (std::abs(ticks) >= static_cast<double>(kLastTick))
        return ticks < 0.0 ? -kLastTick : kLastTick;
    return std::llround(ticks);
}

kLongLong ClampedSum(kLongLong a, kLongLong b)
{
    if (b > 0 ? a > kLastTick - b : a < -kLastTick - b)
        return b > 0 ? kLastTick : -kLastTick;
    return a + b;
}

double RateOf(FBTimeMode mode)
{
    return FBPlayerControl::TheOne().GetTransportFpsValue(mode);
}

} // namespace

namespace FBSDKNamespace
{

const FBTime FBTime::Infinity(kLastTick);
const FBTime FBTime::MinusInfinity(-kLastTick);
const FBTime FBTime::Zero(0);
const FBTime FBTime::Epsilon(1);
const FBTime FBTime::OneSecond(kTicksPerSecond);
const FBTime FBTime::OneMinute(kTicksPerSecond * 60);
const FBTime FBTime::OneHour(kTicksPerSecond * 3600);

FBTime::FBTime(int pHour, int pMinute, int pSecond, int pFrame, int pField, FBTimeMode pTimeMode)
{
    const double frames = pFrame + 0.5 * pField;
    const kLongLong seconds = (pHour * 60LL + pMinute) * 60 + pSecond;
    FBTime part;
    part.Set(NearestTick(frames / RateOf(pTimeMode) * static_cast<double>(kTicksPerSecond)));
    mTime = NearestTick(static_cast<double>(seconds) * static_cast<double>(kTicksPerSecond));
    *this += part;
}

double FBTime::GetSecondDouble() const
{
    return static_cast<double>(mTime) / static_cast<double>(kTicksPerSecond);
}

void FBTime::SetSecondDouble(double pSeconds)
{
    mTime = NearestTick(pSeconds * static_cast<double>(kTicksPerSecond));
}

kLongLong FBTime::GetMilliSeconds() const
{
    return NearestTick(GetSecondDouble() * 1000.0);
}

void FBTime::SetMilliSeconds(kLongLong pMilliSeconds)
{
    SetSecondDouble(static_cast<double>(pMilliSeconds) / 1000.0);
}

kLongLong FBTime::GetFrame(FBTimeMode pTimeMode) const
{
    // A frame begins at a whole tick, up to half a tick before its exact instant.
    const double frames =
        (static_cast<double>(mTime) + 0.5) / static_cast<double>(kTicksPerSecond) * RateOf(pTimeMode);
    return NearestTick(std::floor(frames));
}

void FBTime::SetFrame(kLongLong pFrame, FBTimeMode pTimeMode)
{
    mTime =
        NearestTick(static_cast<double>(pFrame) * static_cast<double>(kTicksPerSecond) / RateOf(pTimeMode));
}

FBTime FBTime::operator+(const FBTime& pTime) const
{
    return FBTime(ClampedSum(mTime, pTime.mTime));
}
FBTime FBTime::operator-(const FBTime& pTime) const
{
    return FBTime(ClampedSum(mTime, -pTime.mTime));
}
FBTime& FBTime::operator+=(const FBTime& pTime)
{
    return *this = *this + pTime;
}
FBTime& FBTime::operator-=(const FBTime& pTime)
{
    return *this = *this - pTime;
}

void FBTimeSpan::Set(FBTime pStart, FBTime pStop)
{
    mStart = pStart;
    mStop = pStop;
}

FBTime FBTimeSpan::GetSignedDuration() const
{
    return mStop - mStart;
}
FBTime FBTimeSpan::GetDuration() const
{
    return GetDirection() < 0 ? mStart - mStop : mStop - mStart;
}
int FBTimeSpan::GetDirection() const
{
    return mStop < mStart ? -1 : 1;
}

} // namespace FBSDKNamespace

namespace mobu_host
{

double FramesPerSecond(FBTimeMode mode, double custom)
{
    switch (mode)
    {
    case kFBTimeModeDefault:
        return 0.0;
    case kFBTimeMode1000Frames:
        return 1000.0;
    case kFBTimeMode120Frames:
        return 120.0;
    case kFBTimeMode119dot88Frames:
        return 120000.0 / 1001.0;
    case kFBTimeMode100Frames:
        return 100.0;
    case kFBTimeMode96Frames:
        return 96.0;
    case kFBTimeMode72Frames:
        return 72.0;
    case kFBTimeMode60Frames:
        return 60.0;
    case kFBTimeMode5994Frames:
        return 60000.0 / 1001.0;
    case kFBTimeMode50Frames:
        return 50.0;
    case kFBTimeMode48Frames:
        return 48.0;
    case kFBTimeMode30Frames:
        return 30.0;
    case kFBTimeMode2997Frames_Drop:
    case kFBTimeMode2997Frames:
        return 30000.0 / 1001.0;
    case kFBTimeMode25Frames:
        return 25.0;
    case kFBTimeMode24Frames:
        return 24.0;
    case kFBTimeMode23976Frames:
        return 24000.0 / 1001.0;
    case kFBTimeModeCustom:
        return custom;
    }
    return 0.0;
}

FBTimeMode ModeOfRate(double frames_per_second)
{
    for (int mode = kFBTimeMode1000Frames; mode < kFBTimeModeCustom; ++mode)
    {
        const double rate = FramesPerSecond(static_cast<FBTimeMode>(mode), 0.0);
        if (std::abs(rate - frames_per_second) < 1e-9 * rate && mode != kFBTimeMode2997Frames_Drop)
            return static_cast<FBTimeMode>(mode);
    }
    return kFBTimeModeCustom;
}

} // namespace mobu_host
