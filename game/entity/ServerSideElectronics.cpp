#include "game/entity/ServerSideElectronics.h"

#include "engine/filesystem/ReadOnlyStream.h"

#include <cmath>
#include <cstdlib>
#include <sstream>

namespace game::entity {

namespace {

constexpr uint8_t kNumber = 1;

/// The number after the first dot of `name`, as strtol reads it in base 10, cut to 32 bits; 0 without a dot.
uint32_t PortNumberAfterDot(std::string const& name) {
    auto const dot = name.find('.');
    if (dot == std::string::npos)
        return 0;
    return static_cast<uint32_t>(std::strtol(name.c_str() + dot + 1, nullptr, 10));
}

}

// ---- Values --------------------------------------------------------------------------------------------------------

ServerSideElectronics::ElectronicsDataInterface::ElectronicsDataInterface(ElectronicsDataInterface const& other)
    : type(other.type), text(other.text), number(other.number) {
    if (type == kNumber && !std::isfinite(number))
        number = 0.0;
}

ServerSideElectronics::ElectronicsDataInterface&
ServerSideElectronics::ElectronicsDataInterface::operator=(ElectronicsDataInterface const& other) {
    type = other.type;
    text = other.text;
    number = type == kNumber && !std::isfinite(other.number) ? 0.0 : other.number;
    return *this;
}

// ---- Ports ---------------------------------------------------------------------------------------------------------

std::optional<uint32_t> ServerSideElectronics::DataPort(std::string const& name) {
    if (name.size() < 4 || name.find("data") == std::string::npos)
        return std::nullopt;
    return PortNumberAfterDot(name);
}

bool ServerSideElectronics::Connect(std::string const& port, Connection const& connection) {
    auto const number = DataPort(port);
    if (!number)
        return false;
    connections[*number] = connection;
    return true;
}

bool ServerSideElectronics::Disconnect(std::string const& port) {
    auto const number = DataPort(port);
    if (!number)
        return false;
    Connection& link = connections[*number];
    link.target.reset();
    link.port.clear();
    return true;
}

void ServerSideElectronics::OutputData(unsigned port, Values const& values) {
    Connection const& link = connections[port];
    if (auto const target = link.target.lock())
        target->InputData(link.port, values, alias);
}

void ServerSideElectronics::InputData(std::string const& port, Values const& values, std::string const& senderAlias) {
    if (auto const number = DataPort(port))
        InputData(*number, values, senderAlias);
}

void ServerSideElectronics::InputData(unsigned port, Values const& values, std::string const& senderAlias) {
    if (!senderAlias.empty()) {
        auto& bySender = inputsByAlias[senderAlias];
        for (uint32_t i = 0; i < values.size(); ++i)
            if (values[i].type != 0)
                bySender[i] = values[i];
    }
    auto& latest = inputsByPort[port];
    for (uint32_t i = 0; i < values.size(); ++i)
        if (values[i].type != 0)
            latest[i] = values[i];

    // The queue holds the port's whole state after each arrival, the newest 100 of them.
    auto& queue = inputQueues[port];
    while (queue.size() > kMaxQueuedSnapshots - 1)
        queue.pop();
    Values& snapshot = queue.emplace();
    snapshot.reserve(latest.size());
    for (auto const& [index, value] : latest) {
        if (index >= snapshot.size())
            snapshot.resize(index + 1);
        snapshot[index] = value;
    }
}

// ---- Other channels ------------------------------------------------------------------------------------------------

std::shared_ptr<QuorlScreen> ServerSideElectronics::GetScreen(unsigned) const {
    return {};
}

double ServerSideElectronics::ApplyVoltage(std::string const&, double, double) {
    return 0.0;
}

double ServerSideElectronics::PushFluid(std::string const&, std::string const&, double) {
    return 0.0;
}

std::unordered_map<std::string, double> ServerSideElectronics::PullFluid(std::string const&, double) {
    return {};
}

// ---- Players -------------------------------------------------------------------------------------------------------

std::string ServerSideElectronics::GetInfo(std::string const&, unsigned, unsigned) const {
    std::ostringstream info;
    info << GetLabel() << "\n";
    info << "<ROLE_CODE>\n";
    info << "<TEXT> Device Alias: \n<SAMELINE> <ACTION_INPUT_TEXT> edit_alias " << alias << "\n";
    info << "</ROLE_CODE>\n";
    bool listed = false;
    for (auto const& [port, link] : connections) {
        auto const target = link.target.lock();
        if (!target)
            continue;
        if (!listed)
            info << "IO Connections: \n";
        listed = true;
        info << "\tPort " << port << " connected to " << target->GetLabel() << " on port "
             << PortNumberAfterDot(link.port) << "\n";
    }
    if (listed)
        info << "-----------------------\n";
    return info.str();
}

void ServerSideElectronics::Action(quorl::filesystem::ReadOnlyStream& stream, unsigned long, std::string const& user) {
    std::string command;
    stream.Read(command);
    if (command == "edit_alias" && HasRight("code", user))
        stream.Read(alias);
}

}
