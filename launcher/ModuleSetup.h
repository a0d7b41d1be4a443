#pragma once

#include <string>
#include <vector>

/// Loads the named modules as GAME_Init, GAME_Mod and SERVER_Mod, whichever libraries each folder holds (SERVER_Mod
/// only for a dedicated server). A broken library is reported by the load-error callback; a name with no library of
/// any of those classes is reported here. Returns the launcher's exit status when anything named could not be
/// loaded: 1 when a module's ModuleLoad threw, else 2; 0 when all loaded.
int LoadLauncherModules(std::vector<std::string> const& names, bool dedicatedServer, bool verbose);

/// Whether every named content module has its library, modules/<name>/<name>.MERIDON_Mod.so: the game skips a
/// missing one in silence, so the launcher says so before it starts. Reports each one missing on standard error.
bool ContentModulesExist(std::vector<std::string> const& names);

/// Closes every module the launcher loaded, after Game::Stop. False when a ModuleUnload threw (it is reported on
/// standard error).
bool UnloadLauncherModules();
