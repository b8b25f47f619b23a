#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wTypes.h"

namespace AsciiTcp
{

/// What a command that is meant for all clients answers.
struct ReachedClients final : public Zu::Params::Group
{
public:
    explicit ReachedClients(uint64 count);
    ~ReachedClients() override;

    Zu::Params::Value<uint64> clients; ///< connected when the command came
};

} // namespace AsciiTcp
