// The port names of the data network, as players type them into link editors: any text either names a data port
// or is refused, and connecting, disconnecting and sending by name all read it alike.

#include "game/entity/ServerSideElectronics.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

class Device : public game::entity::ServerSideElectronics {
public:
    void WriteState(quorl::filesystem::WriteOnlyStream&) override {}
    void ReadState(quorl::filesystem::ReadOnlyStream&) override {}
    void Start() override {}
    void FullSync(quorl::filesystem::WriteOnlyStream&) override {}

    bool Linked(uint32_t port) const { return connections.contains(port); }
    bool Queued(uint32_t port) const { return inputQueues.contains(port); }
};

}

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    std::string const name(reinterpret_cast<char const*>(data), size);
    auto const port = game::entity::ServerSideElectronics::DataPort(name);
    if (port && (name.size() < 4 || name.find("data") == std::string::npos))
        std::abort();

    auto const device = std::make_shared<Device>();
    auto const target = std::make_shared<Device>();
    if (device->Connect(name, {target, name}) != port.has_value())
        std::abort();
    if (port && !device->Linked(*port))
        std::abort();
    if (device->Disconnect(name) != port.has_value())
        std::abort();
    target->InputData(name, {}, "");
    if (port && !target->Queued(*port))
        std::abort();
    return 0;
}
