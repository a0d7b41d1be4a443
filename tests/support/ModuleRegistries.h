#pragma once

#include "modules/GAME_Init.h"
#include "modules/GAME_Mod.h"
#include "modules/MERIDON_Mod.h"
#include "modules/SERVER_Mod.h"
#include "tests/support/Journal.h"

#include <gtest/gtest.h>

/// Starts and ends every test with all four module registries empty and the journal clear, so tests do not see
/// each other's modules when they share a process.
class ModuleRegistriesTest : public testing::Test {
protected:
    void SetUp() override { Reset(); }
    void TearDown() override { Reset(); }

    static void Reset() {
        GAME_Init::UnloadModules();
        GAME_Mod::UnloadModules();
        SERVER_Mod::UnloadModules();
        MERIDON_Mod::UnloadModules();
        journal::Clear();
    }
};
