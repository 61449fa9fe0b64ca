#pragma once

#include <cstddef>
#include <memory>

#include <fbsdk/fbversion.h>

// Handles, the interface bases and the two text classes.

typedef signed long long kLongLong; // 64 bits: ticks

namespace FBSDKNamespace
{

class ICallback;

class FBSDK_DLL IObject
{
public:
    virtual ~IObject();

protected:
    IObject();
};

typedef IObject* HIObject;
typedef ICallback* HICallback;
typedef class IRegister* HIRegister;
typedef class IError* HIError;
typedef IObject* HISender;
typedef class KEventBase* HKEventBase;
typedef HKEventBase HKEvent;

// Owner of event handlers: every handler is called as a member of it.
class FBSDK_DLL ICallback : public IObject
{
public:
    ~ICallback() override;
};

typedef void (ICallback::*kICallbackHandler)(HISender pSender, HKEvent pEvent);
typedef kICallbackHandler FBCallback;

class FBSDK_DLL FBWrapperHolder
{
public:
    virtual ~FBWrapperHolder();
};

// 8-bit text; bytes pass through untouched. NULL counts as "".
class FBSDK_DLL FBString
{
public:
    FBString();
    FBString(const char* pText);
    FBString(const char* pFirst, const char* pSecond);
    FBString(const FBString& pOther);
    ~FBString();

    FBString& operator=(const char* pText);
    FBString& operator=(const FBString& pOther);
    FBString operator+(const char* pText) const;
    FBString& operator+=(const char* pText);
    bool operator==(const char* pText) const;
    bool operator!=(const char* pText) const;
    bool operator<(const char* pText) const;
    bool operator>(const char* pText) const;

    operator char*();
    operator const char*() const;
    char& operator[](unsigned pIndex);
    int GetLen() const;

private:
    struct Text;
    std::unique_ptr<Text> text_;
};

// A list of texts, each with a reference number.
class FBSDK_DLL FBStringList
{
public:
    FBStringList();
    FBStringList(const char* pItems); // separated by '~'
    ~FBStringList();
    FBStringList(const FBStringList&) = delete;
    FBStringList& operator=(const FBStringList&) = delete;

    int GetCount();
    const char* operator[](int pIndex); // NULL outside the list
    const char* GetAt(int pIndex);
    kLongLong GetReferenceAt(int pIndex);
    int Add(const char* pText, kLongLong pReference = 0); // index of the new item
    int Find(const char* pText);                          // index or -1
    bool RemoveAt(int pIndex);
    void Clear();
    const char* AsString(char pSeparator = '~'); // valid until the next call
    void SetString(const char* pItems, char pSeparator = '~');

private:
    struct Items;
    std::unique_ptr<Items> items_;
};

} // namespace FBSDKNamespace
