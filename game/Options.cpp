#include "game/Options.h"

namespace game {

std::unordered_map<std::string, std::any> Options::_options;
std::mutex Options::_mu;

}
