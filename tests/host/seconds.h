#pragma once

#include <fbsdk/fbsdk.h>

inline FBTime Seconds(double seconds)
{
    FBTime time;
    time.SetSecondDouble(seconds);
    return time;
}
