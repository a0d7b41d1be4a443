#include "game/entity/ServerSideElectronics.h"

#include "engine/filesystem/ReadOnlyStream.h"
#include "engine/filesystem/WriteOnlyStream.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

using game::entity::ServerSideElectronics;
using Value = ServerSideElectronics::ElectronicsDataInterface;
using Values = ServerSideElectronics::Values;

namespace {

/// A device as a content module would write one, with its state open to the test.
class Device : public ServerSideElectronics {
public:
    explicit Device(std::string label) : _label(std::move(label)) {}

    void WriteState(quorl::filesystem::WriteOnlyStream&) override {}
    void ReadState(quorl::filesystem::ReadOnlyStream&) override {}
    void Start() override {}
    void FullSync(quorl::filesystem::WriteOnlyStream&) override {}
    std::string GetLabel() const override { return _label; }

    using ServerSideElectronics::alias;
    using ServerSideElectronics::connections;
    using ServerSideElectronics::inputQueues;
    using ServerSideElectronics::inputsByAlias;
    using ServerSideElectronics::inputsByPort;

private:
    std::string _label;
};

Value Number(double number) {
    Value value;
    value.type = 1;
    value.number = number;
    return value;
}

std::vector<double> Numbers(Values const& values) {
    std::vector<double> numbers;
    for (auto const& value : values)
        numbers.push_back(value.type == 1 ? value.number : -1.0);
    return numbers;
}

}

TEST(ElectronicsDataInterface, NumbersThatAreNotFiniteBecomeZeroAtEveryCopy) {
    Value value = Number(0.0);
    value.number = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(Value(value).number, 0.0);
    Value assigned;
    value.number = -std::numeric_limits<double>::infinity();
    assigned = value;
    EXPECT_EQ(assigned.number, 0.0);
    // Only numbers: other types carry their payload as it is.
    value.type = 7;
    EXPECT_TRUE(std::isinf(Value(value).number));
    value.number = 1.7976931348623157e308;
    value.type = 1;
    EXPECT_EQ(Value(value).number, 1.7976931348623157e308);
}

TEST(ServerSideElectronics, PortNamesFollowTheFirstDotWhereverDataStands) {
    std::pair<char const*, std::optional<uint32_t>> const cases[] = {
        {"dat", std::nullopt}, {"power.2", std::nullopt}, {"data", 0}, {"data.0", 0}, {"data.x", 0},
        {"data.12", 12}, {"xdatay.7", 7}, {".3data", 3}, {"data. -1", 0xffffffffu}, {"data.4294967301", 5}};
    for (auto const& [name, port] : cases)
        EXPECT_EQ(ServerSideElectronics::DataPort(name), port) << name;
}

TEST(ServerSideElectronics, ConnectReplacesAndDisconnectLeavesAnEmptyLink) {
    auto device = std::make_shared<Device>("hub");
    auto first = std::make_shared<Device>("first");
    auto second = std::make_shared<Device>("second");
    EXPECT_TRUE(device->Connect("data", {first, "data.1"}));
    EXPECT_TRUE(device->Connect("data.12", {first, "data.2"}));
    EXPECT_TRUE(device->Connect("data.12", {second, "data.3"}));
    EXPECT_EQ(device->connections.at(12).target.lock(), second);
    EXPECT_EQ(device->connections.at(12).port, "data.3");

    EXPECT_TRUE(device->Disconnect("data.40"));
    ASSERT_TRUE(device->connections.contains(40));
    EXPECT_TRUE(device->connections.at(40).target.expired());
    EXPECT_EQ(device->GetInfo("", 0, 0).find("Port 40"), std::string::npos);
}

TEST(ServerSideElectronics, InputMergesTheSendersIndicesAndQueuesThePortsWholeState) {
    Device device("screen");
    device.InputData(3, {Value{}, Value{}, Value{}, Value{}, Value{}, Number(5)}, "");
    ASSERT_EQ(device.inputQueues.at(3).size(), 1u);
    EXPECT_EQ(Numbers(device.inputQueues.at(3).back()), (std::vector<double>{-1, -1, -1, -1, -1, 5}));
    EXPECT_TRUE(device.inputsByAlias.empty()) << "a sender without an alias is not recorded by alias";

    // Another sender fills index 0; a value of type 0 leaves index 5 standing.
    device.InputData("data.3", {Number(1), Value{}, Value{}, Value{}, Value{}, Value{}}, "left");
    EXPECT_EQ(Numbers(device.inputQueues.at(3).back()), (std::vector<double>{1, -1, -1, -1, -1, 5}));
    EXPECT_EQ(device.inputsByAlias.at("left").size(), 1u);
    EXPECT_EQ(device.inputsByPort.at(3).at(5).number, 5.0);

    // A name that is no data port loses the data silently.
    device.InputData("power", {Number(9)}, "left");
    EXPECT_EQ(device.inputQueues.at(3).size(), 2u);
}

TEST(ServerSideElectronics, AnUndrainedPortKeepsTheNewestHundredSnapshots) {
    Device device("logger");
    for (int i = 0; i < 101; ++i)
        device.InputData(0, {Number(i)}, "");
    auto& queue = device.inputQueues.at(0);
    ASSERT_EQ(queue.size(), ServerSideElectronics::kMaxQueuedSnapshots);
    EXPECT_EQ(queue.front()[0].number, 1.0);
    EXPECT_EQ(queue.back()[0].number, 100.0);
}

TEST(ServerSideElectronics, OutputReachesOnlyALiveLinkedDevice) {
    auto sender = std::make_shared<Device>("sender");
    sender->alias = "probe";
    sender->OutputData(4, {Number(1)});
    auto receiver = std::make_shared<Device>("receiver");
    sender->Connect("data.4", {receiver, "data.9"});
    sender->OutputData(4, {Number(2)});
    EXPECT_EQ(receiver->inputQueues.at(9).back()[0].number, 2.0);
    EXPECT_EQ(receiver->inputsByAlias.at("probe").at(0).number, 2.0);

    // A device whose alias changes shows under its new alias; the old key stays.
    sender->alias = "renamed";
    sender->OutputData(4, {Number(3)});
    EXPECT_EQ(receiver->inputsByAlias.at("renamed").at(0).number, 3.0);
    EXPECT_EQ(receiver->inputsByAlias.at("probe").at(0).number, 2.0);

    std::weak_ptr<Device> gone = receiver;
    receiver.reset();
    EXPECT_TRUE(gone.expired());
    sender->OutputData(4, {Number(4)});
}

TEST(ServerSideElectronics, InfoListsTheAliasAndTheLiveLinksByteForByte) {
    auto device = std::make_shared<Device>("Flight computer");
    EXPECT_EQ(device->GetInfo("ada", 300, 200),
              "Flight computer\n<ROLE_CODE>\n<TEXT> Device Alias: \n<SAMELINE> <ACTION_INPUT_TEXT> edit_alias \n"
              "</ROLE_CODE>\n");

    auto screen = std::make_shared<Device>("Screen");
    auto gone = std::make_shared<Device>("Gone");
    device->alias = "fc1";
    device->Connect("data.2", {screen, "data.5"});
    device->Connect("data.3", {gone, "data.1"});
    gone.reset();
    EXPECT_EQ(device->GetInfo("", 0, 0),
              "Flight computer\n<ROLE_CODE>\n<TEXT> Device Alias: \n<SAMELINE> <ACTION_INPUT_TEXT> edit_alias fc1\n"
              "</ROLE_CODE>\nIO Connections: \n\tPort 2 connected to Screen on port 5\n-----------------------\n");

    // With no entity behind it, the default label is empty and its line a lone line break.
    class Unlabelled : public Device {
    public:
        Unlabelled() : Device("") {}
        std::string GetLabel() const override { return ServerSideElectronics::GetLabel(); }
    };
    EXPECT_EQ(Unlabelled().GetInfo("", 0, 0).substr(0, 13), "\n<ROLE_CODE>\n");
}

TEST(ServerSideElectronics, OnlyUsersWithTheCodeRightEditTheAlias) {
    // Whom HasRight lets through is ServerSideEntityTest's; here that the alias asks it for "code".
    Device device("radio");
    device.owner = "ada";
    device.rights["code"]["carol"] = true;
    auto act = [&](char const* word, char const* text, char const* user) {
        quorl::filesystem::WriteOnlyStream written;
        written.Write(word);
        written.Write(text);
        quorl::filesystem::ReadOnlyStream command(written.Bytes());
        device.Action(command, 0, user);
        return device.alias;
    };
    EXPECT_EQ(act("edit_alias", "bob's", "bob"), "");
    EXPECT_EQ(act("rename", "x", "ada"), "") << "not a command";
    EXPECT_EQ(act("edit_alias", "tower", "carol"), "tower");
}
