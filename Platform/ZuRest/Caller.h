#pragma once

#include "ZuCommon/Role.h"

#include <string>

namespace ZuRest
{

/// The person or program that sends a request, as the server has found it out. Immutable.
struct Caller
{
    ZuCommon::Role role = ZuCommon::Role::NONE;
    std::string name;         ///< "user anna", "token line 4", "token file", "local"; empty: not known
    std::string source;       ///< protocol and address: "https 192.0.2.7"
    std::string sessionId;    ///< the public id of the session in a browser; empty without one
    bool isEncrypted = false; ///< the connection is
};

} // namespace ZuRest
