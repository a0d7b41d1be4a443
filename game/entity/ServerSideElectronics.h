#pragma once

#include "game/entity/ServerSideEntityInterface.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <queue>
#include <string>
#include <unordered_map>
#include <vector>

namespace game::entity {

class QuorlScreen;

/// The base of every server-side device on a machine's data network: numbered data ports named "data.N", one
/// outgoing link per output port, inbound queues of the port's merged state, a user-set alias, and empty answers on
/// the voltage and fluid channels. Concrete devices derive from it in content modules; data moves only when one of
/// them calls OutputData, and arrives at once, synchronously, in the receiver's queue. Everything runs on the thread
/// of the server-side entity updates; the class holds no lock.
class MERIDON_EXPORT ServerSideElectronics : public ServerSideEntity::Interface {
public:
    /// One value on a data line. A number that is not finite becomes 0.0 at every copy and assignment, so that no
    /// stored or queued number ever is.
    struct MERIDON_EXPORT ElectronicsDataInterface {
        ElectronicsDataInterface() = default;
        ElectronicsDataInterface(ElectronicsDataInterface const& other);
        ElectronicsDataInterface& operator=(ElectronicsDataInterface const& other);

        /// 0: no value, which leaves the receiver's previous value standing. 1: a number. Others, carried as they
        /// are, belong to the devices (text, for one).
        uint8_t type = 0;
        std::string text;
        double number = 0.0;
    };
    using Values = std::vector<ElectronicsDataInterface>;

    /// An outgoing link. Weak: a link never keeps a device alive, and a gone device is simply no longer reached.
    struct Connection {
        std::weak_ptr<ServerSideElectronics> target;
        /// The port on the far device, "data.N".
        std::string port;
    };

    /// The most snapshots an input port keeps for a device that does not drain it.
    static constexpr size_t kMaxQueuedSnapshots = 100;

    ~ServerSideElectronics() override = default;

    /// The label, the alias as an editable field for users with the right "code", then the live links.
    std::string GetInfo(std::string const& user, unsigned width, unsigned height) const override;
    /// "edit_alias" followed by the new alias, for users with the right "code"; anything else is ignored.
    void Action(quorl::filesystem::ReadOnlyStream& stream, unsigned long size, std::string const& user) override;

    virtual std::shared_ptr<QuorlScreen> GetScreen(unsigned screen) const;
    /// Links output port `port` to `connection`, replacing an earlier link there. False for a name that is no data
    /// port.
    virtual bool Connect(std::string const& port, Connection const& connection);
    /// Empties the link of output port `port`, connected or not. False for a name that is no data port.
    virtual bool Disconnect(std::string const& port);
    /// Merges `values` into input port `port`'s latest values, and queues the port's whole state as it now stands.
    virtual void InputData(unsigned port, Values const& values, std::string const& senderAlias);
    virtual void InputData(std::string const& port, Values const& values, std::string const& senderAlias);
    /// Sends `values` down the link of output port `port`, if it leads to a live device.
    virtual void OutputData(unsigned port, Values const& values);
    virtual double ApplyVoltage(std::string const& port, double voltage, double current);
    virtual double PushFluid(std::string const& port, std::string const& fluid, double amount);
    virtual std::unordered_map<std::string, double> PullFluid(std::string const& port, double amount);

    /// The port number of a name such as "data.12": none unless the name has at least four characters and holds
    /// "data" somewhere; then what follows its first dot, read as a decimal number, 0 without a dot or digits.
    static std::optional<uint32_t> DataPort(std::string const& name);

protected:
    std::unordered_map<uint32_t, Connection> connections;
    std::unordered_map<uint32_t, std::queue<Values>> inputQueues;
    std::unordered_map<uint32_t, std::unordered_map<uint32_t, ElectronicsDataInterface>> inputsByPort;
    std::unordered_map<std::string, std::unordered_map<uint32_t, ElectronicsDataInterface>> inputsByAlias;
    std::string alias;
};

}
