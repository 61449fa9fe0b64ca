#pragma once

#include <fbsdk/fbsdk.h>

// The library object of an exporter that tests load; it does nothing. For one source of its module.

FBLibraryDeclare(exporter_of_a_test) {}
FBLibraryDeclareEnd;

bool FBLibrary::LibInit()
{
    return true;
}
bool FBLibrary::LibOpen()
{
    return true;
}
bool FBLibrary::LibReady()
{
    return true;
}
bool FBLibrary::LibClose()
{
    return true;
}
bool FBLibrary::LibRelease()
{
    return true;
}
