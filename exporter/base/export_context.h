#pragma once

#include <fbsdk/fbsdk.h>

namespace tev2_exporter
{

/// What every step needs to read or drive the scene. Both are light wrappers on the one system and its one
/// player.
struct ExportContext
{
    FBSystem system;
    FBPlayerControl player;
};

} // namespace tev2_exporter
