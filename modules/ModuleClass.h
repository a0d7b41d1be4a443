#pragma once

#include "engine/SharedMutex.h"
#include "engine/modular/ModuleID.h"
#include "game/Export.h"
#include "modules/HookError.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

/// A hook table lists its hooks once, as HOOK(symbol, result, (arguments), "when", "thread", "list"): when the hook
/// runs, on which of the launcher's threads ("main", "game", "input", "server"; "-" for a hook the launcher never
/// calls) and the sorted list that orders its calls ("" for every module, in the registry's own order). These turn
/// the list into fields, symbol look-ups and, for module authors, checked declarations of the exported functions;
/// the hook reference docs/modules.md is written from the same rows.
#define MERIDON_HOOK_FIELD(symbol, result, arguments, ...) result(*symbol) arguments = nullptr;
#define MERIDON_HOOK_FETCH(symbol, result, arguments, ...) fetch(symbol, #symbol);
#define MERIDON_HOOK_EXPORT(symbol, result, arguments, ...)                                                            \
    extern "C" __attribute__((visibility("default"))) result symbol arguments;

/// The hooks every module class fetches besides its own table.
#define MERIDON_MODULE_HOOKS(HOOK)                                                                                     \
    HOOK(ModuleLoad, void, (),                                                                                         \
         "Once, right after the library opens, with the registry of its class locked: load, unload or walk no "        \
         "module of that class from here. A throw fails the load",                                                     \
         "main", "")                                                                                                   \
    HOOK(ModuleUnload, void, (),                                                                                       \
         "Once, right before the library closes: at exit for the launcher's modules, in Game::Stop for content "       \
         "modules. A throw is reported on standard error and the library closes all the same",                         \
         "main", "")                                                                                                   \
    HOOK(ModuleSort, int, (char const* listName),                                                                      \
         "Once per sorted list, after loading and before SplashBegin; GAME_Mod modules only. The answer is the "       \
         "module's place in `listName`, lower first (0 without this hook), ties broken by module name",                \
         "main", "")                                                                                                   \
    HOOK(ModuleSetCustomPtr, void, (void* pointer),                                                                    \
         "When the launcher or another module hands this module a pointer; `meridon` itself never does",               \
         "caller's", "")                                                                                               \
    HOOK(ModuleGetCustomPtr, void*, (),                                                                                \
         "When the launcher or another module asks for the pointer; `meridon` itself never does", "caller's", "")

namespace modules {

/// The one shape shared by the four module classes: a plug-in library opened from
/// "modules/<name>/<name>.<CLASS>.so", its hooks fetched by symbol into nullable function pointers, and a
/// registry per class. `Self` is the module class, `Hooks` its hook table. Every hook may be null; call sites test it.
/// Whatever a hook throws leaves its call as a HookError naming the module and the hook.
///
/// Locking: hooks run under the shared side of the registry lock, ModuleLoad and the load and unload callbacks
/// under the exclusive side. A hook must not load or unload a module of its own class, nor may ModuleLoad call
/// the registry of its class: either deadlocks.
template <class Self, class Hooks>
class MERIDON_EXPORT ModuleClass : public Hooks {
public:
    using Ptr = std::shared_ptr<Self>;

    ModuleClass(std::string const& name, std::string const& path);
    virtual ~ModuleClass();
    ModuleClass(ModuleClass const&) = delete;
    ModuleClass& operator=(ModuleClass const&) = delete;

    quorl::modular::ModuleID id;
    std::string name;
    /// The library file: the path given to the constructor with ".so" appended.
    std::string path;
    /// Last write of the file in milliseconds of the file clock; 0.0 when there was no file.
    double file_time = 0.0;
    void* handle = nullptr;
    /// Why the module did not open: dlopen's error, or what its ModuleLoad threw; null for an open module.
    char const* error = nullptr;

    /// ModuleLoad, ModuleUnload, ModuleSort, ModuleSetCustomPtr and ModuleGetCustomPtr. A ModuleLoad that throws
    /// fails the load, and its module is not unloaded; what ModuleUnload throws is written to standard error.
    MERIDON_MODULE_HOOKS(MERIDON_HOOK_FIELD)

    /// Opens modules/<name>/<name>.<CLASS>.so, or returns the module already loaded under that name.
    static Ptr LoadModule(std::string const& name, bool reportErrors);
    /// Opens `path` + ".so" under the key <name>.<className>. Null when it cannot be opened; the reason goes to the
    /// load-error callback only if reportErrors is set.
    static Ptr LoadModuleLib(std::string const& name, std::string const& className, bool reportErrors,
                             std::string path);
    static Ptr GetModule(std::string const& name);
    /// Forgets the module and removes it from every sorted list; the library closes when the last pointer goes.
    static void UnloadModule(std::string const& name);
    /// Forgets every module and every sorted list, without calling the unload callback.
    static void UnloadModules();
    static size_t Count();
    /// The exclusive side of the registry lock, already held: nothing loads or iterates until it is released.
    static std::unique_lock<quorl::SharedMutex> GetLock();
    /// How often ModuleLoad or ModuleUnload of this class has thrown in this process: neither can throw on, so this
    /// count is how a caller learns of them.
    static size_t LifecycleHookErrors();

    /// Calls `function` for every loaded module, in the registry's own order.
    static void ForEachModule(std::function<void(Ptr&)> const& function);
    /// Calls `function` for every module of the list made by the last SortModules(listName); an unsorted list is
    /// empty. A new list name must be used from one thread at a time, as this creates the list under the shared lock.
    static void ForEachSortedModule(char const* listName, std::function<void(Ptr&)> const& function);
    /// Rebuilds a named list from all loaded modules in the order of `less`. Modules loaded later join the list
    /// only at its next sort.
    static void SortModules(char const* listName, std::function<bool(Ptr, Ptr)> const& less);

    static void ModulesSetLoadCallback(std::function<void(Ptr)> const& callback);
    static void ModulesSetUnloadCallback(std::function<void(Ptr)> const& callback);
    static void ModulesSetLoadErrorCallback(std::function<void(char const*)> const& callback);

    /// Calls one hook of this module, which must be set: module->CallHook(&GAME_Mod::ModuleSort, "update"). What
    /// the hook throws leaves as a HookError naming this module and the hook.
    template <class Owner, class Hook, class... Arguments>
    auto CallHook(Hook Owner::*hook, Arguments... arguments) {
        try {
            return (this->*hook)(arguments...);
        } catch (...) {
            RethrowAsHookError(name, HookName(&(this->*hook)));
        }
    }
    /// Calls one hook of every module that has it: CallHooks(&GAME_Mod::Game_Start). The first throw ends the walk.
    template <class Hook, class... Arguments>
    static void CallHooks(Hook Hooks::*hook, Arguments... arguments) {
        ForEachModule([&](Ptr& module) {
            if ((*module).*hook)
                module->CallHook(hook, arguments...);
        });
    }
    /// Calls one hook of every module of a sorted list, in list order. The first throw ends the walk.
    template <class Hook, class... Arguments>
    static void CallSortedHooks(char const* listName, Hook Hooks::*hook, Arguments... arguments) {
        ForEachSortedModule(listName, [&](Ptr& module) {
            if ((*module).*hook)
                module->CallHook(hook, arguments...);
        });
    }

private:
    /// Calls `fetch(field, symbol)` for every hook field of the module, the class's table and the five that every
    /// class has: the one list of symbols that both fetching and naming hooks read.
    template <class Visit>
    void ForEachHookField(Visit&& fetch);
    /// The symbol of the hook field at `field`.
    char const* HookName(void const* field);

    std::string _errorText;

    static std::unordered_map<std::string, Ptr> _loadedModules;
    static std::unordered_map<std::string, std::vector<Ptr>> _loadedSortedModules;
    static std::function<void(Ptr)> _modulesLoadCallback;
    static std::function<void(Ptr)> _modulesUnloadCallback;
    static std::function<void(char const*)> _modulesLoadErrorCallback;
    static quorl::SharedMutex _mutexForLoadedModules;
    static std::atomic<size_t> _lifecycleHookErrors;
};

}
