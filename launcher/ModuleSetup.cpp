#include "ModuleSetup.h"

#include "modules/GAME_Init.h"
#include "modules/GAME_Mod.h"
#include "modules/SERVER_Mod.h"

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

int SortPlace(GAME_Mod::Ptr const& module, char const* listName) {
    return module->ModuleSort ? module->ModuleSort(listName) : 0;
}

}

bool LoadLauncherModules(std::vector<std::string> const& names, bool dedicatedServer, bool verbose) {
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
    return !failed;
}

void SortGameModules() {
    // Each module says where it belongs in each list; the name breaks ties, so the order is the same every run
    // (the registry itself is unordered).
    for (char const* listName : {"update", "render", "post", "overlay", "ui"}) {
        GAME_Mod::SortModules(listName, [listName](GAME_Mod::Ptr a, GAME_Mod::Ptr b) {
            int placeA = SortPlace(a, listName), placeB = SortPlace(b, listName);
            return placeA != placeB ? placeA < placeB : a->name < b->name;
        });
    }
}

void UnloadLauncherModules() {
    SERVER_Mod::UnloadModules();
    GAME_Mod::UnloadModules();
    GAME_Init::UnloadModules();
}
