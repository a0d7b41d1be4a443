#pragma once

#include "game/Export.h"

#include <stdexcept>
#include <string>

namespace modules {

/// What a module's hook threw, passed on with the module and the hook named. what() reads
/// "module NAME, hook HOOK: " followed by the hook's own message, or by "unknown exception" for a throw of
/// something not derived from std::exception.
class MERIDON_EXPORT HookError : public std::runtime_error {
public:
    HookError(std::string module, std::string hook, std::string const& message);
    ~HookError() override;

    /// The module's name as loaded, e.g. "VENDOR_name".
    std::string module;
    /// The hook's symbol, e.g. "Game_Update".
    std::string hook;
};

/// Rethrows the exception being handled as a HookError of `module` and `hook`. A HookError passes unchanged, so a
/// hook that fails inside another module's hook is the one named. Call it only from inside a catch block.
[[noreturn]] MERIDON_EXPORT void RethrowAsHookError(std::string const& module, char const* hook);

}
