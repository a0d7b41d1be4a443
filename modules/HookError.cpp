#include "modules/HookError.h"

namespace modules {

HookError::HookError(std::string module, std::string hook, std::string const& message)
    : std::runtime_error("module " + module + ", hook " + hook + ": " + message)
    , module(std::move(module))
    , hook(std::move(hook)) {}

// Out of line, so that the type's identity lives in the game library alone and a catch in the launcher or in a
// module matches what the library throws.
HookError::~HookError() = default;

void RethrowAsHookError(std::string const& module, char const* hook) {
    try {
        throw;
    } catch (HookError const&) {
        throw;
    } catch (std::exception const& error) {
        throw HookError(module, hook, error.what());
    } catch (...) {
        throw HookError(module, hook, "unknown exception");
    }
}

}
