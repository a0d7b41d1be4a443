#pragma once

#include "game/Game.h"
#include "game/entity/ClientSideEntity.h"
#include "game/entity/SavedWorld.h"
#include "game/entity/ServerSideEntityInterface.h"
#include "modules/MERIDON_Mod.h"

#include <filesystem>
#include <string>

/// A world of its own for a test or tool, with the TEST_entities content module loaded, its types registered, and
/// everything removed again at the end. Entities go before the module: their interfaces' code lives in it.
class EntityWorld {
public:
    explicit EntityWorld(std::string world, bool keepFiles = false) : _keepFiles(keepFiles) {
        Game::_current_world = std::move(world);
        std::filesystem::create_directories(EntitiesFolder());
        module = MERIDON_Mod::LoadModule("TEST_entities", true);
        if (module && module->Load)
            module->Load();
    }

    ~EntityWorld() {
        {
            std::unique_lock lock(game::entity::ServerSideEntity::_sharedObjectsMutex);
            for (auto& [id, entity] : game::entity::ServerSideEntity::_sharedObjects)
                entity->delete_save_on_destroy = false;
            game::entity::ServerSideEntity::_sharedObjects.clear();
        }
        game::entity::ServerSideEntity::_module_entities.clear();
        {
            std::unique_lock lock(game::entity::ClientSideEntity::_sharedObjectsMutex);
            game::entity::ClientSideEntity::_sharedObjects.clear();
        }
        if (module && module->Unload)
            module->Unload();
        module.reset();
        MERIDON_Mod::UnloadModules();
        if (!_keepFiles)
            std::filesystem::remove_all(WorldFolder());
    }

    static std::string WorldFolder() { return game::entity::SavedWorld::Folder(); }
    static std::string EntitiesFolder() { return WorldFolder() + "/entities"; }
    static quorl::modular::ModuleID Module() { return quorl::modular::ModuleID("TEST_entities"); }

    MERIDON_Mod::Ptr module;

private:
    bool _keepFiles;
};
