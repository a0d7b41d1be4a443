// TEST_fault: each hook here but Game_Stop throws when the environment variable MERIDON_TEST_THROW_IN names it, and
// does nothing otherwise, so that one library per class covers a failure in each place of the game's life. The value
// "HOOK" throws std::runtime_error("TEST_fault failed on purpose"); "HOOK:int" throws the int 42 instead, which
// derives from nothing. Built as GAME_Mod and as SERVER_Mod; each class calls only the hooks of its own table.
// Game_Stop and ModuleUnload say on standard output that they ran, for the tests that check the game was taken down
// in order.

#include "modules/ModuleApi.h"

#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string_view>

namespace {

void ThrowIfAsked(std::string_view hook) {
    char const* asked = std::getenv("MERIDON_TEST_THROW_IN");
    if (!asked || !std::string_view(asked).starts_with(hook))
        return;
    std::string_view const rest = std::string_view(asked).substr(hook.size());
    if (rest.empty())
        throw std::runtime_error("TEST_fault failed on purpose");
    if (rest == ":int")
        throw 42;
}

}

extern "C" void ModuleLoad() { ThrowIfAsked("ModuleLoad"); }
extern "C" void ModuleUnload() {
    std::cout << "TEST_fault: ModuleUnload" << std::endl;
    ThrowIfAsked("ModuleUnload");
}
extern "C" int ModuleSort(char const*) {
    ThrowIfAsked("ModuleSort");
    return 0;
}

extern "C" void Game_Ready() { ThrowIfAsked("Game_Ready"); }
extern "C" void Game_Stop() { std::cout << "TEST_fault: Game_Stop" << std::endl; }
extern "C" void Game_Update(double) { ThrowIfAsked("Game_Update"); }
extern "C" void Renderer_FrameRenderCommands(VkCommandBuffer) { ThrowIfAsked("Renderer_FrameRenderCommands"); }

extern "C" void Server_Load(char const*) { ThrowIfAsked("Server_Load"); }
extern "C" void Server_GameUpdate(double) { ThrowIfAsked("Server_GameUpdate"); }
