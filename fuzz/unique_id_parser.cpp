// The parser of an id's text form, as ids arrive from file names and from clients: any text either gives an id or
// throws one of the two documented errors, and an id that is not null prints back as the text it came from.

#include "game/UniqueId.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    std::string text(reinterpret_cast<char const*>(data), size);
    game::UniqueId id;
    try {
        id = game::UniqueId(text);
    } catch (std::runtime_error const&) {
        return 0;
    } catch (std::invalid_argument const&) {
        return 0;
    }
    // A null id prints as "" whatever its text was, so only the others can be compared.
    if (!id.IsNull() && (id.String() != text || !(game::UniqueId(id.String()) == id)))
        std::abort();
    return 0;
}
