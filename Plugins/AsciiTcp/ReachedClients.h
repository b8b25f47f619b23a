#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wTypes.h"

namespace AsciiTcp
{

/// The result of a command for all clients.
struct ReachedClients final : public Zu::Params::Group
{
public:
    explicit ReachedClients(uint64 count);
    ~ReachedClients() override;

    Zu::Params::Value<uint64> clients; ///< clients connected at the time of the command
};

} // namespace AsciiTcp
