#include "game/DebugInfo.h"

namespace game {

std::map<char const*, unsigned long> DebugInfo::infos;
std::mutex DebugInfo::infosMutex;

}
