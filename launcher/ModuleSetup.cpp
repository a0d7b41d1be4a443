#include "ModuleSetup.h"

#include "modules/GAME_Init.h"
#include "modules/GAME_Mod.h"
#include "modules/MERIDON_Mod.h"
#include "modules/SERVER_Mod.h"

#include <dlfcn.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iostream>

namespace {

/// The game folder's own modules, where the game itself opens them (LoadModule): looked in before any other.
char const kGameModules[] = "modules";

std::string LibraryIn(std::string const& folder, std::string const& name, char const* className) {
    return (std::filesystem::path(folder) / name / (name + "." + className + ".so")).string();
}

/// `relative` under each folder where modules are looked for, made absolute, for messages: "/game/modules/X, /x/X".
std::string PlacesLookedIn(std::string const& relative, std::vector<std::string> const& moduleFolders) {
    auto place = [&](std::string const& folder) {
        return std::filesystem::absolute(std::filesystem::path(folder) / relative).lexically_normal().string();
    };
    std::string places = place(kGameModules);
    for (auto const& folder : moduleFolders)
        places += ", " + place(folder);
    return places;
}

/// Opens `library`, as FindModuleLibrary found it, as module `name` of class T. One in the game folder's modules/
/// goes through LoadModule, the way the game opens modules; one elsewhere is opened where it lies, under the same
/// registry key, so that a later LoadModule of its name returns it. Sets `failed` when it did not open.
template <class T>
void Open(std::string const& name, std::string const& library, bool verbose, bool& failed) {
    typename T::Ptr module;
    if (library == LibraryIn(kGameModules, name, T::CLASS))
        module = T::LoadModule(name, true);
    else
        module = T::LoadModuleLib(name, T::CLASS, true, library.substr(0, library.size() - std::strlen(".so")));
    if (!module)
        failed = true;
    else if (verbose)
        std::cout << "meridon: loaded " << library << std::endl;
}

/// Loads `name` as class T if it has a library of that class. Returns 1 if it has, whether or not it opened;
/// `failed` is set when it did not open.
template <class T>
int LoadIfPresent(std::string const& name, bool verbose, std::vector<std::string> const& moduleFolders,
                  bool& failed) {
    std::string library = FindModuleLibrary(name, T::CLASS, moduleFolders);
    if (library.empty())
        return 0;
    Open<T>(name, library, verbose, failed);
    return 1;
}

/// ModuleLoad and ModuleUnload throws of the classes the launcher opens, so far.
size_t LifecycleHookErrors() {
    return GAME_Init::LifecycleHookErrors() + GAME_Mod::LifecycleHookErrors() + SERVER_Mod::LifecycleHookErrors() +
           MERIDON_Mod::LifecycleHookErrors();
}

/// A module that threw on loading is a failure of the run, like any hook's; one that is missing is a mistake in
/// what was asked for.
int LoadStatus(size_t hookErrorsBefore, bool failed) {
    if (LifecycleHookErrors() != hookErrorsBefore)
        return 1;
    return failed ? 2 : 0;
}

}

std::string FindModuleLibrary(std::string const& name, char const* className,
                              std::vector<std::string> const& moduleFolders) {
    std::error_code ignored;
    if (auto library = LibraryIn(kGameModules, name, className); std::filesystem::exists(library, ignored))
        return library;
    for (auto const& folder : moduleFolders)
        if (auto library = LibraryIn(folder, name, className); std::filesystem::exists(library, ignored))
            return library;
    return "";
}

int LoadLauncherModules(std::vector<std::string> const& names, bool dedicatedServer, bool verbose,
                        std::vector<std::string> const& moduleFolders) {
    size_t const hookErrorsBefore = LifecycleHookErrors();
    bool failed = false;
    for (auto const& name : names) {
        int found = LoadIfPresent<SERVER_Mod>(name, verbose, moduleFolders, failed);
        if (!dedicatedServer)
            found += LoadIfPresent<GAME_Init>(name, verbose, moduleFolders, failed) +
                     LoadIfPresent<GAME_Mod>(name, verbose, moduleFolders, failed);
        if (found == 0) {
            std::cerr << "meridon: module '" << name << "' has no " << (dedicatedServer ? "SERVER_Mod" : "GAME_Init, GAME_Mod or SERVER_Mod")
                      << " library in " << PlacesLookedIn(name, moduleFolders) << std::endl;
            failed = true;
        }
    }
    return LoadStatus(hookErrorsBefore, failed);
}

bool ContentModulesExist(std::vector<std::string> const& names, std::vector<std::string> const& moduleFolders) {
    bool found = true;
    for (auto const& name : names) {
        std::string library = FindModuleLibrary(name, MERIDON_Mod::CLASS, moduleFolders);
        if (library.empty()) {
            std::cerr << "meridon: content module '" << name << "' has no library at "
                      << PlacesLookedIn(name + "/" + name + "." + MERIDON_Mod::CLASS + ".so", moduleFolders)
                      << std::endl;
            found = false;
        } else if (!ContentModuleVersionFits(name, library)) {
            found = false;
        }
    }
    return found;
}

int LoadContentModulesElsewhere(std::vector<std::string> const& names, bool verbose,
                                std::vector<std::string> const& moduleFolders) {
    size_t const hookErrorsBefore = LifecycleHookErrors();
    bool failed = false;
    for (auto const& name : names) {
        // Those of the game folder are the game's to open, and missing ones ContentModulesExist's to report.
        std::string library = FindModuleLibrary(name, MERIDON_Mod::CLASS, moduleFolders);
        if (!library.empty() && library != LibraryIn(kGameModules, name, MERIDON_Mod::CLASS))
            Open<MERIDON_Mod>(name, library, verbose, failed);
    }
    return LoadStatus(hookErrorsBefore, failed);
}

bool ContentModuleVersionFits(std::string const& name, std::string const& library) {
    // Opened on its own and closed again, only to read the number: the game opens it for good when it starts.
    void* handle = dlopen(library.c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (!handle) {
        char const* reason = dlerror();
        std::cerr << "meridon: content module '" << name << "' cannot be opened: "
                  << (reason ? reason : "unknown dlopen error") << std::endl;
        return false;
    }
    auto const* version = static_cast<uint32_t const*>(dlsym(handle, "_MERIDON_Mod_VERSION"));
    bool const fits = !version || *version == MERIDON_MOD_VERSION;
    if (!fits)
        std::cerr << "meridon: content module '" << name << "' is of module version " << *version
                  << ", and this game takes version " << MERIDON_MOD_VERSION << ": " << library << std::endl;
    dlclose(handle);
    return fits;
}

bool UnloadLauncherModules() {
    size_t const hookErrorsBefore = LifecycleHookErrors();
    // Content modules are Game::Stop's to close; any left were opened for a game that never started.
    MERIDON_Mod::UnloadModules();
    SERVER_Mod::UnloadModules();
    GAME_Mod::UnloadModules();
    GAME_Init::UnloadModules();
    return LifecycleHookErrors() == hookErrorsBefore;
}
