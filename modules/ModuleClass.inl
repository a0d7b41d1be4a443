// Definitions of the module template. Only the four module class sources include this, each stamping out its own
// class and registry; everyone else links against those instantiations.
#pragma once

#include "modules/ModuleClass.h"

#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <shared_mutex>

namespace modules {

template <class Self, class Hooks>
std::unordered_map<std::string, typename ModuleClass<Self, Hooks>::Ptr> ModuleClass<Self, Hooks>::_loadedModules;
template <class Self, class Hooks>
std::unordered_map<std::string, std::vector<typename ModuleClass<Self, Hooks>::Ptr>>
    ModuleClass<Self, Hooks>::_loadedSortedModules;
template <class Self, class Hooks>
std::function<void(typename ModuleClass<Self, Hooks>::Ptr)> ModuleClass<Self, Hooks>::_modulesLoadCallback =
    [](Ptr) {};
template <class Self, class Hooks>
std::function<void(typename ModuleClass<Self, Hooks>::Ptr)> ModuleClass<Self, Hooks>::_modulesUnloadCallback =
    [](Ptr) {};
template <class Self, class Hooks>
std::function<void(char const*)> ModuleClass<Self, Hooks>::_modulesLoadErrorCallback = [](char const* text) {
    std::cerr << text << std::endl;
};
template <class Self, class Hooks>
quorl::SharedMutex ModuleClass<Self, Hooks>::_mutexForLoadedModules;
template <class Self, class Hooks>
std::atomic<size_t> ModuleClass<Self, Hooks>::_lifecycleHookErrors = 0;

// ---- One module ----------------------------------------------------------------------------------------------

template <class Self, class Hooks>
ModuleClass<Self, Hooks>::ModuleClass(std::string const& name, std::string const& path)
    : id(name), name(name), path(path + ".so") {
    std::error_code ignored;
    auto status = std::filesystem::status(this->path, ignored);
    if (status.type() != std::filesystem::file_type::none && status.type() != std::filesystem::file_type::not_found) {
        auto written = std::filesystem::last_write_time(this->path, ignored).time_since_epoch();
        file_time = static_cast<double>(std::chrono::duration_cast<std::chrono::nanoseconds>(written).count()) / 1000000.0;
    }

    handle = dlopen(this->path.c_str(), RTLD_LAZY);
    if (!handle) {
        // dlerror's text lives in a buffer the next dl call overwrites; keep our own copy.
        char const* reason = dlerror();
        _errorText = reason ? reason : "unknown dlopen error";
        error = _errorText.c_str();
        return;
    }

    ForEachHookField([this](auto& slot, char const* symbol) {
        slot = reinterpret_cast<std::remove_reference_t<decltype(slot)>>(dlsym(handle, symbol));
    });
    if (!ModuleLoad)
        return;
    try {
        CallHook(&ModuleClass::ModuleLoad);
        return;
    } catch (HookError const& failure) {
        _errorText = failure.what();
    }
    // A module whose start failed did not open: nothing of it is called again, ModuleUnload included.
    ++_lifecycleHookErrors;
    error = _errorText.c_str();
    ModuleUnload = nullptr;
    dlclose(handle);
    handle = nullptr;
}

template <class Self, class Hooks>
ModuleClass<Self, Hooks>::~ModuleClass() {
    if (ModuleUnload) {
        try {
            CallHook(&ModuleClass::ModuleUnload);
        } catch (HookError const& failure) {
            // A destructor may not throw; the library is closed all the same.
            ++_lifecycleHookErrors;
            std::cerr << "Module '" << path << "' failed to unload with error: " << failure.what() << std::endl;
        }
    }
    if (handle)
        dlclose(handle);
}

template <class Self, class Hooks>
template <class Visit>
void ModuleClass<Self, Hooks>::ForEachHookField(Visit&& fetch) {
    this->FetchHooks(fetch);
    MERIDON_MODULE_HOOKS(MERIDON_HOOK_FETCH)
}

template <class Self, class Hooks>
char const* ModuleClass<Self, Hooks>::HookName(void const* field) {
    char const* found = "unknown hook";
    ForEachHookField([&](auto& slot, char const* symbol) {
        if (static_cast<void const*>(&slot) == field)
            found = symbol;
    });
    return found;
}

// ---- Loading -------------------------------------------------------------------------------------------------

template <class Self, class Hooks>
typename ModuleClass<Self, Hooks>::Ptr ModuleClass<Self, Hooks>::LoadModule(std::string const& name,
                                                                            bool reportErrors) {
    std::string path = "modules/" + name + "/" + name + "." + Hooks::CLASS;
    return LoadModuleLib(name, Hooks::CLASS, reportErrors, path);
}

template <class Self, class Hooks>
typename ModuleClass<Self, Hooks>::Ptr ModuleClass<Self, Hooks>::LoadModuleLib(std::string const& name,
                                                                               std::string const& className,
                                                                               bool reportErrors, std::string path) {
    std::unique_lock lock(_mutexForLoadedModules);
    std::string key = name + "." + className;
    if (auto found = _loadedModules.find(key); found != _loadedModules.end())
        return found->second;

    Ptr module(new Self(name, path));
    if (!module->handle) {
        if (reportErrors) {
            std::string message = "Module '" + path + "' failed to load with error: " + module->error;
            _modulesLoadErrorCallback(message.c_str());
        }
        return nullptr;
    }
    _loadedModules.emplace(key, module);
    _modulesLoadCallback(module);
    return module;
}

// ---- Unloading -----------------------------------------------------------------------------------------------

template <class Self, class Hooks>
void ModuleClass<Self, Hooks>::UnloadModule(std::string const& name) {
    Ptr module;  // declared before the lock: the library closes after the lock is released
    std::unique_lock lock(_mutexForLoadedModules);
    auto found = _loadedModules.find(name + "." + Hooks::CLASS);
    if (found == _loadedModules.end())
        return;
    module = found->second;
    _modulesUnloadCallback(module);
    _loadedModules.erase(found);
    if (module) {
        for (auto& [listName, list] : _loadedSortedModules)
            std::erase(list, module);
    }
}

template <class Self, class Hooks>
void ModuleClass<Self, Hooks>::UnloadModules() {
    // Moved out so that ModuleUnload and dlclose run after the lock is released.
    decltype(_loadedSortedModules) sorted;
    decltype(_loadedModules) loaded;
    std::unique_lock lock(_mutexForLoadedModules);
    loaded.swap(_loadedModules);
    sorted.swap(_loadedSortedModules);
}

// ---- Registry ------------------------------------------------------------------------------------------------

template <class Self, class Hooks>
typename ModuleClass<Self, Hooks>::Ptr ModuleClass<Self, Hooks>::GetModule(std::string const& name) {
    std::shared_lock lock(_mutexForLoadedModules);
    auto found = _loadedModules.find(name + "." + Hooks::CLASS);
    return found == _loadedModules.end() ? nullptr : found->second;
}

template <class Self, class Hooks>
size_t ModuleClass<Self, Hooks>::Count() {
    std::shared_lock lock(_mutexForLoadedModules);
    return _loadedModules.size();
}

template <class Self, class Hooks>
std::unique_lock<quorl::SharedMutex> ModuleClass<Self, Hooks>::GetLock() {
    return std::unique_lock(_mutexForLoadedModules);
}

template <class Self, class Hooks>
size_t ModuleClass<Self, Hooks>::LifecycleHookErrors() {
    return _lifecycleHookErrors;
}

template <class Self, class Hooks>
void ModuleClass<Self, Hooks>::ForEachModule(std::function<void(Ptr&)> const& function) {
    std::shared_lock lock(_mutexForLoadedModules);
    for (auto const& [key, module] : _loadedModules) {
        if (!module)
            continue;
        Ptr copy = module;
        function(copy);
    }
}

template <class Self, class Hooks>
void ModuleClass<Self, Hooks>::ForEachSortedModule(char const* listName, std::function<void(Ptr&)> const& function) {
    std::shared_lock lock(_mutexForLoadedModules);
    for (auto const& module : _loadedSortedModules[listName]) {
        if (!module)
            continue;
        Ptr copy = module;
        function(copy);
    }
}

template <class Self, class Hooks>
void ModuleClass<Self, Hooks>::SortModules(char const* listName, std::function<bool(Ptr, Ptr)> const& less) {
    std::unique_lock lock(_mutexForLoadedModules);
    auto& list = _loadedSortedModules[listName];
    list.clear();
    list.reserve(_loadedModules.size());
    for (auto const& [key, module] : _loadedModules)
        list.push_back(module);
    std::sort(list.begin(), list.end(), less);
}

// ---- Callbacks: set by the launcher before anything loads, so no lock ----------------------------------------

template <class Self, class Hooks>
void ModuleClass<Self, Hooks>::ModulesSetLoadCallback(std::function<void(Ptr)> const& callback) {
    _modulesLoadCallback = callback;
}

template <class Self, class Hooks>
void ModuleClass<Self, Hooks>::ModulesSetUnloadCallback(std::function<void(Ptr)> const& callback) {
    _modulesUnloadCallback = callback;
}

template <class Self, class Hooks>
void ModuleClass<Self, Hooks>::ModulesSetLoadErrorCallback(std::function<void(char const*)> const& callback) {
    _modulesLoadErrorCallback = callback;
}

}
