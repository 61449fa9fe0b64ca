#include "host/sdk/event.h"

namespace FBSDKNamespace
{

int FBPlug::mGlobalTypeInfo = 0;
int FBPlug::TypeInfo = FBPlug::mGlobalTypeInfo++;

FBPlug::FBPlug() = default;
FBPlug::~FBPlug() = default;
const char* FBPlug::ClassName()
{
    return "FBPlug";
}
bool FBPlug::Is(int pTypeId)
{
    return pTypeId == TypeInfo;
}
int FBPlug::GetTypeId()
{
    return TypeInfo;
}
void FBPlug::FBDelete()
{
    delete this;
}

FBSDKClassImplementation(FBEvent);
FBSDKClassImplementation(FBEventActivate);

FBEvent::FBEvent(HKEvent pEvent) : type_(pEvent ? pEvent->type : kFBEventUnknown) {}
FBEventType FBEvent::GetType() const
{
    return type_;
}

FBEventActivate::FBEventActivate(HKEvent pEvent) : FBEvent(pEvent) {}

} // namespace FBSDKNamespace
