#pragma once

#include "wApi/wTypes.h"

namespace AsciiTcp
{

/// What an output reads at one moment.
struct Reading
{
    enum class State : uint8
    {
        NONE,    ///< no result has come yet
        INVALID, ///< a result has come that gives no number
        VALID
    };

    State state = State::NONE;
    uint8 decision = 0; ///< 1 within limits
    double value = 0;   ///< finite when valid
};

} // namespace AsciiTcp
