// Defines every hook of every module class as a do-nothing function, so a test can check that each hook of a
// table is fetched by its own symbol. Built once per class as TEST_every.

#include "modules/ModuleApi.h"

#include <type_traits>

#pragma GCC diagnostic ignored "-Wunused-parameter"

template <class Result>
Result Nothing() {
    if constexpr (!std::is_void_v<Result>)
        return Result{};
}

#define DEFINE_HOOK(symbol, result, arguments, ...) extern "C" result symbol arguments { return Nothing<result>(); }
MERIDON_GAME_INIT_HOOKS(DEFINE_HOOK)
MERIDON_GAME_MOD_HOOKS(DEFINE_HOOK)
MERIDON_SERVER_MOD_HOOKS(DEFINE_HOOK)
MERIDON_MERIDON_MOD_HOOKS(DEFINE_HOOK)
DEFINE_HOOK(ModuleSort, int, (char const* listName))
DEFINE_HOOK(ModuleSetCustomPtr, void, (void* pointer))
DEFINE_HOOK(ModuleGetCustomPtr, void*, ())
extern "C" uint32_t const _MERIDON_Mod_VERSION = MERIDON_MOD_VERSION;
