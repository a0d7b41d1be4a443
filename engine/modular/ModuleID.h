#pragma once

#include "engine/Export.h"

#include <cstdint>
#include <string>

namespace quorl::modular {

/// Identity of a module, or of anything that belongs to one, made from a "VENDOR_module" name. The vendor part is
/// upper-cased and the module part lower-cased, each read as up to 12 digits base 37 with the first character least
/// significant. A rejected name leaves both words 0.
class QUORL_EXPORT ModuleID {
public:
    ModuleID() = default;
    ModuleID(uint64_t vendor, uint64_t module) : vendor(vendor), module(module) {}
    explicit ModuleID(std::string const& name);

    /// "VENDOR_module", or "" when either word is 0.
    std::string String() const;

    bool operator==(ModuleID const&) const = default;

    uint64_t vendor = 0;
    uint64_t module = 0;
};

}
