#pragma once

#include "ZuCommon/Role.h"
#include "ZuControl/Export.h"

#include <string>

namespace ZuControl
{

/// The client of a service that asks for a command.
struct CommandOrigin
{
    std::string address;                        ///< such as "192.168.0.7"; empty: not known
    ZuCommon::Role role = ZuCommon::Role::NONE; ///< as the service judges the client
};

/// While it exists, the operations that the thread begins belong to the client of `origin`. `ControlProtocolOperations`
/// passes the origin on with the end of the operation.
///
/// `origin` outlives the scope. Scopes of one thread may nest; the innermost one applies. One thread uses a scope.
class ZUCONTROL_API CommandOriginScope final
{
public:
    explicit CommandOriginScope(CommandOrigin const& origin) noexcept;
    ~CommandOriginScope();

    CommandOriginScope(CommandOriginScope const&) = delete;
    CommandOriginScope& operator=(CommandOriginScope const&) = delete;

    /// The origin that applies on the calling thread; empty outside of each scope.
    static CommandOrigin Current();

private:
    CommandOrigin const* const outer;
};

} // namespace ZuControl
