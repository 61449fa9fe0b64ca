#pragma once

#include <fbsdk/fbtypes.h>

// Vectors, colours and the 4x4 matrix. Everything is plain data.

namespace FBSDKNamespace
{

template <class T>
class FBSDK_TEMPLATE FBVector2
{
public:
    constexpr FBVector2() = default;
    constexpr FBVector2(T pX, T pY) : mValue{pX, pY} {}
    explicit constexpr FBVector2(const T* pValues) : mValue{pValues[0], pValues[1]} {}
    T& operator[](int pIndex) { return mValue[pIndex]; }
    const T& operator[](int pIndex) const { return mValue[pIndex]; }
    operator T*() { return mValue; }
    operator const T*() const { return mValue; }

protected:
    T mValue[2] = {};
};

template <class T>
class FBSDK_TEMPLATE FBVector3
{
public:
    constexpr FBVector3() = default;
    constexpr FBVector3(T pX, T pY, T pZ) : mValue{pX, pY, pZ} {}
    explicit constexpr FBVector3(const T* pValues) : mValue{pValues[0], pValues[1], pValues[2]} {}
    T& operator[](int pIndex) { return mValue[pIndex]; }
    const T& operator[](int pIndex) const { return mValue[pIndex]; }
    operator T*() { return mValue; }
    operator const T*() const { return mValue; }

protected:
    T mValue[3] = {};
};

template <class T>
class FBSDK_TEMPLATE FBVector4
{
public:
    constexpr FBVector4() = default;
    constexpr FBVector4(T pX, T pY, T pZ, T pW = T(1)) : mValue{pX, pY, pZ, pW} {}
    explicit constexpr FBVector4(const T* pValues) : mValue{pValues[0], pValues[1], pValues[2], pValues[3]} {}
    T& operator[](int pIndex) { return mValue[pIndex]; }
    const T& operator[](int pIndex) const { return mValue[pIndex]; }
    operator T*() { return mValue; }
    operator const T*() const { return mValue; }

protected:
    T mValue[4] = {};
};

typedef FBVector2<double> FBVector2d;
typedef FBVector3<double> FBVector3d;
typedef FBVector4<double> FBVector4d;

// Red, green, blue, each 0 to 1.
class FBSDK_TEMPLATE FBColor : public FBVector3<double>
{
public:
    constexpr FBColor() = default;
    constexpr FBColor(double pRed, double pGreen, double pBlue) : FBVector3<double>(pRed, pGreen, pBlue) {}
    explicit constexpr FBColor(const double* pValues) : FBVector3<double>(pValues) {}
};

// Red, green, blue, alpha, each 0 to 1.
class FBSDK_TEMPLATE FBColorAndAlpha : public FBVector4<double>
{
public:
    constexpr FBColorAndAlpha() : FBVector4<double>(0.0, 0.0, 0.0, 1.0) {}
    constexpr FBColorAndAlpha(double pRed, double pGreen, double pBlue, double pAlpha = 1.0)
        : FBVector4<double>(pRed, pGreen, pBlue, pAlpha)
    {
    }
    explicit constexpr FBColorAndAlpha(const double* pValues) : FBVector4<double>(pValues) {}
};

// Row-vector layout: rows 0 to 2 are the axes (times scale), row 3 the translation. Identity by default.
class FBSDK_DLL FBMatrix
{
public:
    FBMatrix() { Identity(); }
    explicit FBMatrix(const double* pValues) { Set(pValues); }

    double& operator()(int pRow, int pColumn) { return mValue[pRow][pColumn]; }
    operator double*() const { return const_cast<double*>(&mValue[0][0]); } // flat, row by row
    void Set(const double* pValues);                                        // 16 values, row by row
    void Identity();

private:
    double mValue[4][4];
};

} // namespace FBSDKNamespace
