#include "host/sdk/property_value.h"

#include <cstring>

namespace mobu_host
{

std::size_t ValueSize(FBPropertyType type)
{
    switch (type)
    {
    case kFBPT_bool:
        return sizeof(bool);
    case kFBPT_int:
    case kFBPT_enum:
        return sizeof(int);
    case kFBPT_int64:
    case kFBPT_uint64:
        return sizeof(kLongLong);
    case kFBPT_float:
        return sizeof(float);
    case kFBPT_double:
        return sizeof(double);
    case kFBPT_charptr:
        return sizeof(const char*);
    case kFBPT_Time:
        return sizeof(FBTime);
    case kFBPT_object:
        return sizeof(void*);
    case kFBPT_Vector4D:
    case kFBPT_ColorRGBA:
        return sizeof(FBVector4d);
    case kFBPT_Vector3D:
    case kFBPT_ColorRGB:
        return sizeof(FBVector3d);
    case kFBPT_Vector2D:
        return sizeof(FBVector2d);
    case kFBPT_TimeSpan:
        return sizeof(FBTimeSpan);
    case kFBPT_unknown:
    case kFBPT_TimeCode:
    case kFBPT_event:
    case kFBPT_stringlist:
    case kFBPT_Action:
    case kFBPT_Reference:
    case kFBPT_kReference:
        break;
    }
    return 0;
}

int NumberCount(FBPropertyType type)
{
    switch (type)
    {
    case kFBPT_bool:
    case kFBPT_int:
    case kFBPT_enum:
    case kFBPT_int64:
    case kFBPT_uint64:
    case kFBPT_float:
    case kFBPT_double:
    case kFBPT_Time:
        return 1;
    case kFBPT_Vector2D:
    case kFBPT_TimeSpan:
        return 2;
    case kFBPT_Vector3D:
    case kFBPT_ColorRGB:
        return 3;
    case kFBPT_Vector4D:
    case kFBPT_ColorRGBA:
        return 4;
    default:
        return 0;
    }
}

namespace
{

template <class T>
T Load(const ValueBytes& value, int component = 0)
{
    T number;
    std::memcpy(&number, value.bytes + sizeof number * static_cast<std::size_t>(component), sizeof number);
    return number;
}

template <class T>
void Keep(ValueBytes& value, T number, int component = 0)
{
    std::memcpy(value.bytes + sizeof number * static_cast<std::size_t>(component), &number, sizeof number);
}

} // namespace

double NumberAt(FBPropertyType type, const ValueBytes& value, int component)
{
    switch (type)
    {
    case kFBPT_bool:
        return Load<bool>(value);
    case kFBPT_int:
    case kFBPT_enum:
        return Load<int>(value);
    case kFBPT_int64:
        return static_cast<double>(Load<kLongLong>(value));
    case kFBPT_uint64:
        return static_cast<double>(Load<unsigned long long>(value));
    case kFBPT_float:
        return static_cast<double>(Load<float>(value));
    case kFBPT_Time:
    case kFBPT_TimeSpan:
        return Load<FBTime>(value, component).GetSecondDouble();
    default:
        return NumberCount(type) ? Load<double>(value, component) : 0.0;
    }
}

void SetNumberAt(FBPropertyType type, ValueBytes& value, int component, double number)
{
    switch (type)
    {
    case kFBPT_bool:
        return Keep(value, number >= 0.5);
    case kFBPT_int:
    case kFBPT_enum:
        return Keep(value, Nearest<int>(number));
    case kFBPT_int64:
        return Keep(value, Nearest<kLongLong>(number));
    case kFBPT_uint64:
        return Keep(value, Nearest<unsigned long long>(number));
    case kFBPT_float:
        return Keep(value, static_cast<float>(number));
    case kFBPT_Time:
    case kFBPT_TimeSpan:
    {
        FBTime time;
        time.SetSecondDouble(number);
        return Keep(value, time, component);
    }
    default:
        if (NumberCount(type))
            Keep(value, number, component);
    }
}

} // namespace mobu_host
