#include "modules/SortedLists.h"

#include "modules/GAME_Mod.h"

#include <unordered_map>

namespace modules {

void SortGameModLists() {
    for (char const* listName : kSortedListNames) {
        std::unordered_map<GAME_Mod const*, int> places;
        GAME_Mod::ForEachModule([&](GAME_Mod::Ptr& module) {
            places[module.get()] = module->ModuleSort ? module->CallHook(&GAME_Mod::ModuleSort, listName) : 0;
        });
        GAME_Mod::SortModules(listName, [&places](GAME_Mod::Ptr a, GAME_Mod::Ptr b) {
            int placeA = places[a.get()], placeB = places[b.get()];
            return placeA != placeB ? placeA < placeB : a->name < b->name;
        });
    }
}

}
