#pragma once

#include <string>
#include <vector>

/// Loads the named modules as GAME_Init, GAME_Mod and SERVER_Mod, whichever libraries each folder holds (SERVER_Mod
/// only for a dedicated server). A broken library is reported by the load-error callback; a name with no library of
/// any of those classes is reported here. Returns false if anything named could not be loaded.
bool LoadLauncherModules(std::vector<std::string> const& names, bool dedicatedServer, bool verbose);

/// Sorts the GAME_Mod lists "update", "render", "post", "overlay" and "ui": by each module's ModuleSort answer for
/// the list, lower first (0 when it has none), then by name.
void SortGameModules();

/// Closes every module the launcher loaded, after Game::Stop.
void UnloadLauncherModules();
