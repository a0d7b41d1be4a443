#include "ModuleSetup.h"

#include "modules/GAME_Init.h"
#include "modules/GAME_Mod.h"
#include "modules/MERIDON_Mod.h"
#include "modules/SERVER_Mod.h"

#include <dlfcn.h>

#include <cstdint>
#include <filesystem>
#include <iostream>

namespace {

/// Loads `name` as class T if its library exists. Returns 1 if the file was there, whether or not it opened;
/// `failed` is set when it did not open.
template <class T>
int LoadIfPresent(std::string const& name, bool verbose, bool& failed) {
    std::string file = "modules/" + name + "/" + name + "." + T::CLASS + ".so";
    if (!std::filesystem::exists(file))
        return 0;
    if (!T::LoadModule(name, true))
        failed = true;
    else if (verbose)
        std::cout << "meridon: loaded " << file << std::endl;
    return 1;
}

/// ModuleLoad and ModuleUnload throws of the three classes the launcher loads, so far.
size_t LifecycleHookErrors() {
    return GAME_Init::LifecycleHookErrors() + GAME_Mod::LifecycleHookErrors() + SERVER_Mod::LifecycleHookErrors();
}

}

int LoadLauncherModules(std::vector<std::string> const& names, bool dedicatedServer, bool verbose) {
    size_t const hookErrorsBefore = LifecycleHookErrors();
    bool failed = false;
    for (auto const& name : names) {
        int found = LoadIfPresent<SERVER_Mod>(name, verbose, failed);
        if (!dedicatedServer)
            found += LoadIfPresent<GAME_Init>(name, verbose, failed) + LoadIfPresent<GAME_Mod>(name, verbose, failed);
        if (found == 0) {
            std::cerr << "meridon: module '" << name << "' has no " << (dedicatedServer ? "SERVER_Mod" : "GAME_Init, GAME_Mod or SERVER_Mod")
                      << " library in " << std::filesystem::absolute("modules/" + name).string() << std::endl;
            failed = true;
        }
    }
    // A module that threw on loading is a failure of the run, like any hook's; one that is missing is a mistake in
    // what was asked for.
    if (LifecycleHookErrors() != hookErrorsBefore)
        return 1;
    return failed ? 2 : 0;
}

bool ContentModulesExist(std::vector<std::string> const& names) {
    bool found = true;
    for (auto const& name : names) {
        std::string file = "modules/" + name + "/" + name + "." + MERIDON_Mod::CLASS + ".so";
        if (!std::filesystem::exists(file)) {
            std::cerr << "meridon: content module '" << name << "' has no library at "
                      << std::filesystem::absolute(file).string() << std::endl;
            found = false;
        } else if (!ContentModuleVersionFits(name, file)) {
            found = false;
        }
    }
    return found;
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
    SERVER_Mod::UnloadModules();
    GAME_Mod::UnloadModules();
    GAME_Init::UnloadModules();
    return LifecycleHookErrors() == hookErrorsBefore;
}
