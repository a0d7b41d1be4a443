// What a hook fan-out costs per call: the renderer and the loops call CallHooks and CallSortedHooks many times per
// frame. Run from the tests' game tree (the launcher target `bench_module_hooks` does), where the test modules are.

#include "JsonLineReporter.h"

#include "modules/GAME_Mod.h"

#include <string>

namespace {

void LoadModules(int count) {
    GAME_Mod::UnloadModules();
    char const* names[] = {"TEST_alpha", "TEST_beta", "TEST_gamma", "TEST_every"};
    for (int i = 0; i < count; ++i)
        GAME_Mod::LoadModule(names[i % 4], true);
    GAME_Mod::SortModules("update", [](GAME_Mod::Ptr a, GAME_Mod::Ptr b) { return a->name < b->name; });
}

void CallHooksOfAllModules(benchmark::State& state) {
    LoadModules(static_cast<int>(state.range(0)));
    for (auto _ : state)
        GAME_Mod::CallHooks(&GAME_Mod::Renderer_FrameInit);
    state.counters["modules"] = static_cast<double>(GAME_Mod::Count());
}

void CallHooksOfSortedList(benchmark::State& state) {
    LoadModules(static_cast<int>(state.range(0)));
    for (auto _ : state)
        GAME_Mod::CallSortedHooks("update", &GAME_Mod::Renderer_FrameUpdate);
    state.counters["modules"] = static_cast<double>(GAME_Mod::Count());
}

}

BENCHMARK(CallHooksOfAllModules)->Arg(1)->Arg(4);
BENCHMARK(CallHooksOfSortedList)->Arg(1)->Arg(4);

int main(int argc, char** argv) {
    RunBenchmarks(argc, argv);
    // Closed here, while the test modules' own globals still exist for their unload hooks.
    GAME_Mod::UnloadModules();
    return 0;
}
