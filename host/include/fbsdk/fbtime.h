#pragma once

#include <fbsdk/fbtypes.h>

// Time in ticks of 1/46,186,158,000 second.

namespace FBSDKNamespace
{

// The numbers differ between versions of the SDK: use the names.
enum FBTimeMode
{
    kFBTimeModeDefault, // the rate of the transport
    kFBTimeMode1000Frames,
    kFBTimeMode120Frames,
    kFBTimeMode119dot88Frames,
    kFBTimeMode100Frames,
    kFBTimeMode96Frames,
    kFBTimeMode72Frames,
    kFBTimeMode60Frames,
    kFBTimeMode5994Frames,
    kFBTimeMode50Frames,
    kFBTimeMode48Frames,
    kFBTimeMode30Frames,
    kFBTimeMode2997Frames_Drop,
    kFBTimeMode2997Frames,
    kFBTimeMode25Frames,
    kFBTimeMode24Frames,
    kFBTimeMode23976Frames,
    kFBTimeModeCustom
};

class FBSDK_DLL FBTime
{
public:
    constexpr FBTime(kLongLong pTime = 0) : mTime(pTime) {}
    FBTime(int pHour, int pMinute, int pSecond = 0, int pFrame = 0, int pField = 0,
           FBTimeMode pTimeMode = kFBTimeModeDefault);

    kLongLong Get() const { return mTime; }
    void Set(kLongLong pTime) { mTime = pTime; }
    double GetSecondDouble() const;
    void SetSecondDouble(double pSeconds); // nearest tick; clamped to MinusInfinity..Infinity, NaN gives 0
    kLongLong GetMilliSeconds() const;
    void SetMilliSeconds(kLongLong pMilliSeconds);
    kLongLong GetFrame(FBTimeMode pTimeMode = kFBTimeModeDefault) const; // the frame that lasts at this time
    void SetFrame(kLongLong pFrame, FBTimeMode pTimeMode = kFBTimeModeDefault);

    bool operator==(const FBTime& pTime) const { return mTime == pTime.mTime; }
    bool operator!=(const FBTime& pTime) const { return mTime != pTime.mTime; }
    bool operator<(const FBTime& pTime) const { return mTime < pTime.mTime; }
    bool operator>(const FBTime& pTime) const { return mTime > pTime.mTime; }
    bool operator<=(const FBTime& pTime) const { return mTime <= pTime.mTime; }
    bool operator>=(const FBTime& pTime) const { return mTime >= pTime.mTime; }
    FBTime operator+(const FBTime& pTime) const; // sums stop at the two infinities
    FBTime operator-(const FBTime& pTime) const;
    FBTime& operator+=(const FBTime& pTime);
    FBTime& operator-=(const FBTime& pTime);

    static const FBTime Infinity;
    static const FBTime MinusInfinity;
    static const FBTime Zero;
    static const FBTime Epsilon;
    static const FBTime OneSecond;
    static const FBTime OneMinute;
    static const FBTime OneHour;

private:
    kLongLong mTime;
};

class FBSDK_DLL FBTimeSpan
{
public:
    FBTimeSpan(FBTime pStart = FBTime(0), FBTime pStop = FBTime(0)) : mStart(pStart), mStop(pStop) {}

    FBTime& GetStart() { return mStart; }
    FBTime& GetStop() { return mStop; }
    const FBTime& GetStart() const { return mStart; }
    const FBTime& GetStop() const { return mStop; }
    void Set(FBTime pStart, FBTime pStop);
    FBTime GetDuration() const;       // never negative
    FBTime GetSignedDuration() const; // negative when the span runs backwards
    int GetDirection() const;         // 1 or -1

private:
    FBTime mStart;
    FBTime mStop;
};

} // namespace FBSDKNamespace
