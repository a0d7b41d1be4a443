#pragma once

#include <string>
#include <vector>

/// Loads the named modules as GAME_Init, GAME_Mod and SERVER_Mod, whichever libraries each folder holds (SERVER_Mod
/// only for a dedicated server). A broken library is reported by the load-error callback; a name with no library of
/// any of those classes is reported here. Returns the launcher's exit status when anything named could not be
/// loaded: 1 when a module's ModuleLoad threw, else 2; 0 when all loaded.
int LoadLauncherModules(std::vector<std::string> const& names, bool dedicatedServer, bool verbose);

/// Whether every named content module has its library, modules/<name>/<name>.MERIDON_Mod.so, of this game's module
/// version: the game skips a missing one in silence, so the launcher says so before it starts. Reports each one
/// missing or refused on standard error.
bool ContentModulesExist(std::vector<std::string> const& names);

/// Whether the content module `name`, whose library is at `library`, was built for this game's MERIDON_MOD_VERSION.
/// One that does not say (no `_MERIDON_Mod_VERSION`) is taken. Reports a library that is of another version, or that
/// does not open, on standard error.
bool ContentModuleVersionFits(std::string const& name, std::string const& library);

/// Closes every module the launcher loaded, after Game::Stop. False when a ModuleUnload threw (it is reported on
/// standard error).
bool UnloadLauncherModules();
