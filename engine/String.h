#pragma once

#include "engine/Export.h"

#include <string>

namespace quorl {

struct QUORL_EXPORT String {
    /// Removes every leading and trailing character that appears in `characters`, in place.
    static void Trim(std::string& text, std::string const& characters = " \t\r\n");
};

}
