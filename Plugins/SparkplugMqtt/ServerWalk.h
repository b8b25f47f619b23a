#pragma once

#include "wApi/wTypes.h"

#include <cstddef>
#include <functional>

namespace SparkplugMqtt
{

/// Says which server to try next, and when: all servers in order, then a pause, then all again. The pause doubles with
/// each round without success, and is drawn at random from its upper half, so that many nodes that lost one server do
/// not return at the same moment.
class ServerWalk final
{
public:
    static constexpr uint64 STEP_USEC = 200'000;          ///< longest pause between two servers of a round
    static constexpr uint64 FIRST_PAUSE_USEC = 1'000'000; ///< longest pause after the first round
    static constexpr uint64 LONGEST_PAUSE_USEC = 60'000'000;

    /// Returns a number from 0 to `most`.
    using Draw = std::function<uint64(uint64 most)>;

    ServerWalk(std::size_t newServerCount, Draw newDraw);

    std::size_t Server() const
    {
        return server;
    }

    /// The session with the present server has failed or ended. Moves on to the next server and returns the pause
    /// before it is tried.
    uint64 Advance();

    /// The session has lasted: later failures begin with short pauses again.
    void NoteSuccess();

private:
    std::size_t const serverCount;
    Draw const draw;
    std::size_t server = 0;
    std::size_t failures = 0; // since the last success
};

} // namespace SparkplugMqtt
