// The decoder of link packets, as they arrive from a network: any bytes either decode or throw FormatError, and
// what decodes writes back as the very same bytes, the format having one form for each packet.

#include "content/link/LinkMessages.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    std::vector<entitylink::Message> messages;
    try {
        messages = entitylink::Decode(data, size);
    } catch (entitylink::FormatError const&) {
        return 0;
    }
    auto again = entitylink::Encode(messages);
    if (again.size() != size || !std::equal(again.begin(), again.end(), data))
        std::abort();
    return 0;
}
