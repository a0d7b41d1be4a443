#include "VerboseReport.h"

#include "game/entity/ServerSideEntity.h"
#include "modules/GAME_Init.h"
#include "modules/GAME_Mod.h"
#include "modules/MERIDON_Mod.h"
#include "modules/SERVER_Mod.h"

#include <map>
#include <string>

namespace {

/// Adds class T to the classes of each module of its registry.
template <class T>
void AddClass(std::map<std::string, std::string>& classes) {
    T::ForEachModule([&](typename T::Ptr& module) {
        std::string& list = classes[module->name];
        list += list.empty() ? T::CLASS : std::string(", ") + T::CLASS;
    });
}

}

void PrintLoaded(std::ostream& out) {
    // Sorted by name, as the registries have no order of their own.
    std::map<std::string, std::string> classes;
    AddClass<GAME_Init>(classes);
    AddClass<GAME_Mod>(classes);
    AddClass<SERVER_Mod>(classes);
    AddClass<MERIDON_Mod>(classes);
    for (auto const& [name, list] : classes)
        out << "meridon: module " << name << ": " << list << "\n";
    game::entity::ServerSideEntity::ForEachRegisteredType([&](std::string const& module, std::string const& type) {
        out << "meridon: entity type " << type << " of module " << module << "\n";
    });
    out.flush();
}
