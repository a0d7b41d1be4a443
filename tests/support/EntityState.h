#pragma once

#include "game/entity/ServerSideEntityInterface.h"

#include <string>

/// What the TEST_entities interfaces keep, read through their own WriteState.
struct CounterState {
    uint64_t updates = 0;
    std::string note;

    static CounterState Of(game::entity::ServerSideEntity& entity) {
        quorl::filesystem::WriteOnlyStream written;
        entity.interface->WriteState(written);
        quorl::filesystem::ReadOnlyStream stream(written.Bytes());
        CounterState state;
        stream.Read(state.updates);
        stream.Read(state.note);
        return state;
    }

    /// The note of a counter of this generation; its length changes with the generation, so a torn file shows.
    static std::string Pattern(uint64_t generation) {
        return std::string(300 + generation % 50, static_cast<char>('a' + generation % 26));
    }

    /// Sets the state by the interface's own ReadState.
    void Into(game::entity::ServerSideEntity& entity) const {
        quorl::filesystem::WriteOnlyStream written;
        written.Write(updates);
        written.Write(note);
        quorl::filesystem::ReadOnlyStream stream(written.Bytes());
        entity.interface->ReadState(stream);
    }
};
