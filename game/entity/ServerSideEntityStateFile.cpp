// The entity's state file: its place and motion, then the interface's own block. Layout, little-endian:
//   "MERIDON!" "ENTITY !" u32 version=1, module id (16 bytes), type (string), environment, parent_environment,
//   parent id (16 bytes), position (3 doubles), orientation (w x y z doubles), dynamic (byte),
//   linear_velocity, angular_velocity (3 doubles each), bounds_radius (double), asleep (byte),
//   "\n\n\n\n", interface block (nested stream), "\nEOF".

#include "engine/filesystem/AtomicFileBatch.h"
#include "engine/filesystem/BinaryFileStream.h"
#include "game/entity/SavedWorld.h"
#include "game/entity/ServerSideEntityInterface.h"

#include <cstring>
#include <filesystem>

namespace game::entity {

namespace {

constexpr char kMagic1[] = "MERIDON!";
constexpr char kMagic2[] = "ENTITY !";
constexpr uint32_t kVersion = 1;
constexpr char kInterfaceMagic[] = "\n\n\n\n";
constexpr char kEndMark[] = "\nEOF";
/// Asleep is stored as a flag; a body loaded asleep gets this rest time, past the physics' threshold of 1.0.
constexpr double kRestTimeWhenLoadedAsleep = 2.0;

template <size_t N>
void WriteMark(quorl::filesystem::Stream& stream, char const (&mark)[N]) {
    stream.Write(reinterpret_cast<unsigned char const*>(mark), N - 1);
}

template <size_t N>
bool ReadMark(quorl::filesystem::Stream& stream, char const (&mark)[N]) {
    unsigned char bytes[N - 1];
    stream.Read(bytes, N - 1);
    return std::memcmp(bytes, mark, N - 1) == 0;
}

}

std::string ServerSideEntity::GetStateSaveFile() const {
    return SavedWorld::Folder() + "/entities/" + id.String() + ".entitystate";
}

void ServerSideEntity::WriteFields(quorl::filesystem::WriteOnlyStream& stream) const {
    WriteMark(stream, kMagic1);
    WriteMark(stream, kMagic2);
    stream.Write(kVersion);
    stream.Write(module);
    stream.Write(type);
    stream.Write(environment);
    stream.Write(parent_environment);
    stream.Write(parent);
    stream.Write(position);
    for (double component : {orientation.w, orientation.x, orientation.y, orientation.z})
        stream.Write(component);
    stream.Write(static_cast<uint8_t>(dynamic));
    stream.Write(linear_velocity);
    stream.Write(angular_velocity);
    stream.Write(bounds_radius);
    stream.Write(static_cast<uint8_t>(!dynamic || rest_time >= 1.0));
}

std::vector<unsigned char> ServerSideEntity::SaveState() {
    // The interface writes first, so that it can fail before any file is touched.
    quorl::filesystem::WriteOnlyStream block;
    if (interface)
        interface->WriteState(block);

    quorl::filesystem::WriteOnlyStream file(256 + block.Size());
    WriteFields(file);
    WriteMark(file, kInterfaceMagic);
    file.Write(block);
    WriteMark(file, kEndMark);
    return file.Bytes();
}

void ServerSideEntity::Serialize() {
    quorl::filesystem::AtomicFileBatch save;
    save.Add(GetStateSaveFile(), SaveState());
    save.Commit();
}

quorl::filesystem::ReadOnlyStream ServerSideEntity::Deserialize() {
    std::string path = GetStateSaveFile();
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored))
        throw std::runtime_error("Save state file does not exist for entity " + id.String());

    quorl::filesystem::BinaryFileStream file(path, 1024);
    if (!ReadMark(file, kMagic1) || !ReadMark(file, kMagic2))
        throw std::runtime_error("Invalid save state magic string for entity " + id.String());
    uint32_t version = 0;
    file.Read(version);
    if (version != kVersion)
        throw std::runtime_error("Invalid save state version for entity " + id.String());

    file.Read(module);
    file.Read(type);
    file.Read(environment);
    file.Read(parent_environment);
    file.Read(parent);
    file.Read(position);
    file.Read(orientation.w);
    file.Read(orientation.x);
    file.Read(orientation.y);
    file.Read(orientation.z);
    uint8_t flag = 0;
    file.Read(flag);
    dynamic = flag != 0;
    file.Read(linear_velocity);
    file.Read(angular_velocity);
    file.Read(bounds_radius);
    file.Read(flag);
    if (flag != 0)
        rest_time = kRestTimeWhenLoadedAsleep;

    if (!ReadMark(file, kInterfaceMagic))
        throw std::runtime_error("Invalid save state interface magic string for entity " + id.String());
    return file.ReadStream();
}

}
