// TEST_input: prints when the controller reports the chat action pressed, then quits the game, so that a test
// driving a real window sees that a key press went all the way through.

#include "modules/ModuleApi.h"

#include "game/Game.h"
#include "game/input/Controller.h"

#include <iostream>

extern "C" void Input_Update(double) {
    if (!game::input::Controller::GetInputChat_Pressed())
        return;
    std::cout << "InputChat pressed" << std::endl;
    Game::Quit();
}
