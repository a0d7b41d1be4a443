#pragma once

#include "game/Export.h"

namespace modules {

/// The GAME_Mod lists sorted once after loading, whose hooks run in list order: "update" for Game_Update, "render",
/// "post" and "overlay" for the frame stages, "ui" for the interface.
inline constexpr char const* kSortedListNames[] = {"update", "render", "post", "overlay", "ui"};

/// Sorts every list of kSortedListNames: by each module's ModuleSort answer for the list, lower first (0 for a module
/// without it), then by name, so that the order is the same on every run although the registry is unordered. Each
/// module is asked once per list before the sort, so a ModuleSort that throws does so as a HookError, never from
/// inside the sort.
MERIDON_EXPORT void SortGameModLists();

}
