#include <algorithm>
#include <string>
#include <vector>

#include <fbsdk/fbtypes.h>

namespace FBSDKNamespace
{

IObject::IObject() = default;
IObject::~IObject() = default;
ICallback::~ICallback() = default;
FBWrapperHolder::~FBWrapperHolder() = default;

struct FBString::Text
{
    std::string text;
};

FBString::FBString() : text_(std::make_unique<Text>()) {}
FBString::FBString(const char* pText) : FBString(pText, nullptr) {}
FBString::FBString(const char* pFirst, const char* pSecond) : FBString()
{
    *this += pFirst;
    *this += pSecond;
}
FBString::FBString(const FBString& pOther) : text_(std::make_unique<Text>(*pOther.text_)) {}
FBString::~FBString() = default;

FBString& FBString::operator=(const char* pText)
{
    text_->text = std::string(pText ? pText : "");
    return *this;
}

FBString& FBString::operator=(const FBString& pOther)
{
    *text_ = Text(*pOther.text_);
    return *this;
}

FBString FBString::operator+(const char* pText) const
{
    return FBString(text_->text.c_str(), pText);
}

FBString& FBString::operator+=(const char* pText)
{
    if (pText)
        text_->text += pText;
    return *this;
}

bool FBString::operator==(const char* pText) const
{
    return text_->text == (pText ? pText : "");
}
bool FBString::operator!=(const char* pText) const
{
    return !(*this == pText);
}
bool FBString::operator<(const char* pText) const
{
    return text_->text < (pText ? pText : "");
}
bool FBString::operator>(const char* pText) const
{
    return text_->text > (pText ? pText : "");
}
FBString::operator char*()
{
    return text_->text.data();
}
FBString::operator const char*() const
{
    return text_->text.c_str();
}
char& FBString::operator[](unsigned pIndex)
{
    return text_->text[pIndex];
}
int FBString::GetLen() const
{
    return static_cast<int>(text_->text.size());
}

struct FBStringList::Items
{
    struct Item
    {
        std::string text;
        kLongLong reference;
    };
    std::vector<Item> items;
    std::string joined;

    const Item* At(int index) const
    {
        const auto position = static_cast<std::size_t>(index);
        return index >= 0 && position < items.size() ? &items[position] : nullptr;
    }
};

FBStringList::FBStringList() : items_(std::make_unique<Items>()) {}
FBStringList::FBStringList(const char* pItems) : FBStringList()
{
    SetString(pItems);
}
FBStringList::~FBStringList() = default;

int FBStringList::GetCount()
{
    return static_cast<int>(items_->items.size());
}
const char* FBStringList::operator[](int pIndex)
{
    return GetAt(pIndex);
}

const char* FBStringList::GetAt(int pIndex)
{
    const auto* item = items_->At(pIndex);
    return item ? item->text.c_str() : nullptr;
}

kLongLong FBStringList::GetReferenceAt(int pIndex)
{
    const auto* item = items_->At(pIndex);
    return item ? item->reference : 0;
}

int FBStringList::Add(const char* pText, kLongLong pReference)
{
    items_->items.push_back({pText ? pText : "", pReference});
    return GetCount() - 1;
}

int FBStringList::Find(const char* pText)
{
    const auto& items = items_->items;
    const auto found = std::find_if(items.begin(), items.end(),
                                    [&](const auto& item) { return pText && item.text == pText; });
    return found == items.end() ? -1 : static_cast<int>(found - items.begin());
}

bool FBStringList::RemoveAt(int pIndex)
{
    if (!items_->At(pIndex))
        return false;
    items_->items.erase(items_->items.begin() + pIndex);
    return true;
}

void FBStringList::Clear()
{
    items_->items.clear();
}

const char* FBStringList::AsString(char pSeparator)
{
    items_->joined.clear();
    for (const auto& item : items_->items)
    {
        if (&item != &items_->items.front())
            items_->joined += pSeparator;
        items_->joined += item.text;
    }
    return items_->joined.c_str();
}

void FBStringList::SetString(const char* pItems, char pSeparator)
{
    const std::string text = pItems ? pItems : "";
    Clear();
    for (std::size_t begin = 0; begin < text.size();)
    {
        const std::size_t end = std::min(text.find(pSeparator, begin), text.size());
        Add(text.substr(begin, end - begin).c_str());
        begin = end + 1;
    }
}

} // namespace FBSDKNamespace
