#pragma once

#include <string>
#include <vector>

/// The library of module `name` of class `className`: <folder>/<name>/<name>.<className>.so, looked for in the game
/// folder's modules/ first, then in each of `moduleFolders` in order. Empty when none holds it.
std::string FindModuleLibrary(std::string const& name, char const* className,
                              std::vector<std::string> const& moduleFolders);

/// Loads the named modules as GAME_Init, GAME_Mod and SERVER_Mod, whichever libraries FindModuleLibrary finds for
/// each (SERVER_Mod only for a dedicated server). A broken library is reported by the load-error callback; a name
/// with no library of any of those classes is reported here. Returns the launcher's exit status when anything named
/// could not be loaded: 1 when a module's ModuleLoad threw, else 2; 0 when all loaded.
int LoadLauncherModules(std::vector<std::string> const& names, bool dedicatedServer, bool verbose,
                        std::vector<std::string> const& moduleFolders);

/// Whether every named content module has its library, found as FindModuleLibrary finds it, of this game's module
/// version: the game skips a missing one in silence, so the launcher says so before it starts. Reports each one
/// missing or refused on standard error.
bool ContentModulesExist(std::vector<std::string> const& names, std::vector<std::string> const& moduleFolders);

/// Opens the named content modules whose library lies in one of `moduleFolders` rather than in the game folder's
/// modules/. Game::Start opens content modules by their path in modules/ only, and takes one already open under
/// the same name as it is, so these must be open before it runs; it calls their Load as it does the others'.
/// Returns the exit status as LoadLauncherModules does.
int LoadContentModulesElsewhere(std::vector<std::string> const& names, bool verbose,
                                std::vector<std::string> const& moduleFolders);

/// Whether the content module `name`, whose library is at `library`, was built for this game's MERIDON_MOD_VERSION.
/// One that does not say (no `_MERIDON_Mod_VERSION`) is taken. Reports a library that is of another version, or that
/// does not open, on standard error.
bool ContentModuleVersionFits(std::string const& name, std::string const& library);

/// Closes every module the launcher loaded, after Game::Stop, and content modules that it opened for a game that
/// then never started. False when a ModuleUnload threw (it is reported on standard error).
bool UnloadLauncherModules();
