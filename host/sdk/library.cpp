#include <algorithm>

#include "host/sdk/library.h"

namespace mobu_host
{

std::vector<FBLibraryBase*>& Libraries()
{
    static std::vector<FBLibraryBase*> libraries;
    return libraries;
}

} // namespace mobu_host

namespace FBSDKNamespace
{

FBLibraryBase::FBLibraryBase()
{
    mobu_host::Libraries().push_back(this);
}
FBLibraryBase::~FBLibraryBase()
{
    std::erase(mobu_host::Libraries(), this);
}

} // namespace FBSDKNamespace
