#pragma once

#include "engine/Export.h"

#include <string>
#include <vector>

namespace quorl {

struct QUORL_EXPORT Base16 {
    /// Bytes of an upper-case hexadecimal text, high nibble first. Throws std::invalid_argument "not a hex digit"
    /// for a character outside "0123456789ABCDEF" (lower case included) and "invalid size" for an odd length.
    static std::vector<unsigned char> Decode(std::string const& text);
};

}
