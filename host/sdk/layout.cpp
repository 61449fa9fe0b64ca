#include "host/sdk/layout.h"

namespace mobu_host
{
namespace
{

struct Box
{
    int left = 0, top = 0, width = 0, height = 0;
};

Box BoxOf(FBLayout& layout, const std::vector<Region>& regions, const std::string& name);

int Scaled(const RegionEdge& edge, int length)
{
    return edge.offset + static_cast<int>(edge.multiplier * static_cast<float>(length));
}

// The position of an edge.
int Placed(const RegionEdge& edge, FBLayout& layout, const std::vector<Region>& regions)
{
    const Box box = BoxOf(layout, regions, edge.relative);
    switch (edge.type)
    {
    case kFBAttachLeft:
        return box.left + edge.offset;
    case kFBAttachRight:
        return box.left + box.width + edge.offset;
    case kFBAttachTop:
        return box.top + edge.offset;
    case kFBAttachBottom:
        return box.top + box.height + edge.offset;
    default:
        return edge.offset;
    }
}

// A length: given, that of another region, or from start to an edge of one.
int Length(const RegionEdge& edge, int start, FBLayout& layout, const std::vector<Region>& regions)
{
    const Box box = BoxOf(layout, regions, edge.relative);
    switch (edge.type)
    {
    case kFBAttachWidth:
        return Scaled(edge, box.width);
    case kFBAttachHeight:
        return Scaled(edge, box.height);
    case kFBAttachNone:
        return edge.offset;
    default:
        return Placed(edge, layout, regions) - start;
    }
}

Box BoxOf(FBLayout& layout, const std::vector<Region>& regions, const std::string& name)
{
    const auto region = std::find_if(regions.begin(), regions.end(),
                                     [&](const Region& candidate) { return candidate.name == name; });
    Box box;
    if (name.empty() || region == regions.end())
    {
        box.width = layout.Width;
        box.height = layout.Height;
        return box;
    }
    box.left = Placed(region->x, layout, regions);
    box.top = Placed(region->y, layout, regions);
    box.width = Length(region->width, box.left, layout, regions);
    box.height = Length(region->height, box.top, layout, regions);
    if (region->x.type == kFBAttachCenter)
    {
        const Box around = BoxOf(layout, regions, region->x.relative);
        box.left = around.left + (around.width - box.width) / 2 + region->x.offset;
    }
    if (region->y.type == kFBAttachCenter)
    {
        const Box around = BoxOf(layout, regions, region->y.relative);
        box.top = around.top + (around.height - box.height) / 2 + region->y.offset;
    }
    return box;
}

} // namespace

const std::vector<Region>& Regions(FBLayout& layout)
{
    return SdkAccess::Regions(layout).regions;
}

const Region* FindRegion(FBLayout& layout, const std::string& name)
{
    return SdkAccess::Regions(layout).Find(name.c_str());
}

} // namespace mobu_host

namespace FBSDKNamespace
{

using namespace mobu_host;

FBSDKClassImplementation(FBLayout);

FBLayout::FBLayout(HIObject pObject) : FBVisualComponent(pObject), regions_(std::make_unique<Regions>())
{
    Publish(*this, OnShow, "OnShow");
    Publish(*this, OnResize, "OnResize");
    Publish(*this, OnPaint, "OnPaint");
    Publish(*this, OnIdle, "OnIdle");
    Publish(*this, OnInput, "OnInput");
}

FBLayout::~FBLayout() = default;

bool FBLayout::AddRegion(const char* pName, const char* pTitle, int pX, FBAttachType pXType,
                         const char* pXRelative, float pMultX, int pY, FBAttachType pYType,
                         const char* pYRelative, float pMultY, int pW, FBAttachType pWType,
                         const char* pWRelative, float pMultW, int pH, FBAttachType pHType,
                         const char* pHRelative, float pMultH)
{
    const auto edge = [](int offset, FBAttachType type, const char* relative, float multiplier) {
        return RegionEdge{offset, type, relative ? relative : "", multiplier};
    };
    mobu_host::Region region{pName ? pName : "",
                             pTitle ? pTitle : "",
                             edge(pX, pXType, pXRelative, pMultX),
                             edge(pY, pYType, pYRelative, pMultY),
                             edge(pW, pWType, pWRelative, pMultW),
                             edge(pH, pHType, pHRelative, pMultH),
                             {},
                             nullptr};
    for (const RegionEdge* side : {&region.x, &region.y, &region.width, &region.height})
        if (!side->relative.empty() && !regions_->Find(side->relative.c_str()))
            return false;
    if (region.name.empty() || regions_->Find(pName))
        return false;
    regions_->regions.push_back(std::move(region));
    return true;
}

bool FBLayout::MoveRegion(const char* pName, int pX, int pY)
{
    auto* region = regions_->Find(pName);
    if (!region)
        return false;
    region->x.offset = pX;
    region->y.offset = pY;
    return true;
}

bool FBLayout::SizeRegion(const char* pName, int pW, int pH)
{
    auto* region = regions_->Find(pName);
    if (!region)
        return false;
    region->width.offset = pW;
    region->height.offset = pH;
    return true;
}

bool FBLayout::RemoveRegion(const char* pName)
{
    return std::erase_if(regions_->regions,
                         [&](const auto& region) { return pName && region.name == pName; }) > 0;
}

bool FBLayout::RenameRegion(const char* pOldName, const char* pNewName)
{
    auto* region = regions_->Find(pOldName);
    if (!region || !pNewName || !*pNewName || regions_->Find(pNewName))
        return false;
    const std::string old_name = region->name;
    for (auto& other : regions_->regions)
        for (RegionEdge* side : {&other.x, &other.y, &other.width, &other.height})
            if (side->relative == old_name)
                side->relative = pNewName;
    region->name = pNewName;
    return true;
}

bool FBLayout::SetRegionTitle(const char* pName, const char* pTitle)
{
    auto* region = regions_->Find(pName);
    if (region)
        region->title = pTitle ? pTitle : "";
    return region != nullptr;
}

const char* FBLayout::GetRegion(int pIndex)
{
    const auto index = static_cast<std::size_t>(pIndex);
    return pIndex >= 0 && index < regions_->regions.size() ? regions_->regions[index].name.c_str() : nullptr;
}

bool FBLayout::GetRegionPositions(const char* pName, bool pComputed, int* pX1, int* pY1, int* pX2, int* pY2)
{
    const auto* region = regions_->Find(pName);
    if (!region)
        return false;
    int edges[4] = {region->x.offset, region->y.offset, region->width.offset, region->height.offset};
    if (pComputed)
    {
        const Box box = BoxOf(*this, regions_->regions, region->name);
        edges[0] = box.left;
        edges[1] = box.top;
        edges[2] = box.left + box.width;
        edges[3] = box.top + box.height;
    }
    int* const targets[4] = {pX1, pY1, pX2, pY2};
    for (int i = 0; i < 4; ++i)
        if (targets[i])
            *targets[i] = edges[i];
    return true;
}

bool FBLayout::SetControl(const char* pName, FBVisualComponent* pComponent)
{
    auto* region = regions_->Find(pName);
    if (!region || !pComponent)
        return false;
    region->control = pComponent;
    pComponent->Region.Name = pName;
    return true;
}

bool FBLayout::SetControl(const char* pName, FBVisualComponent& pComponent)
{
    return SetControl(pName, &pComponent);
}
bool FBLayout::SetView(const char* pName, FBVisualComponent* pComponent)
{
    return SetControl(pName, pComponent);
}

FBVisualComponent* FBLayout::GetControl(const char* pName)
{
    const auto* region = regions_->Find(pName);
    return region ? region->control : nullptr;
}

bool FBLayout::ClearControl(const char* pName)
{
    auto* region = regions_->Find(pName);
    if (region)
        region->control = nullptr;
    return region != nullptr;
}

bool FBLayout::SetBorder(const char* pName, FBBorderStyle pType, bool pShowTitle, bool pInSet, int pWidth,
                         int pSpacing, float pMaxAngle, int pCornerRadius)
{
    auto* region = regions_->Find(pName);
    if (region)
        region->border = {pType, pShowTitle, pInSet, pWidth, pSpacing, pMaxAngle, pCornerRadius};
    return region != nullptr;
}

void FBLayout::Restructure(bool) {} // positions are computed on request

} // namespace FBSDKNamespace
