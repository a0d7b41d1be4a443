#pragma once

#include "game/Game.h"
#include "modules/SortedLists.h"
#include "tests/support/ModuleRegistries.h"

/// A Game with empty registries and its state back at the launcher's starting point.
class GameTest : public ModuleRegistriesTest {
protected:
    void SetUp() override {
        ModuleRegistriesTest::SetUp();
        Game::window = nullptr;
        Game::isActive = true;
        Game::_is_server = true;
        Game::_mods.clear();
        Game::_joysticks.clear();
        Game::_mouseLook = false;
        Game::_inputMode = 0;
        Game::timeActive = true;
        Game::timeOffset = 0.0;
        std::lock_guard lock(Game::_syncMutex);
        Game::_syncQueue.clear();
    }

    /// Sorts the GAME_Mod lists as the launcher does.
    static void SortAllLists() { modules::SortGameModLists(); }
};
