#pragma once

#include "Plugins/AsciiTcp/AsciiRequest.h"
#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"
#include "wApi/wTypes.h"

#include <string>
#include <string_view>

namespace AsciiTcp
{

/// The operations that a conversation uses to answer requests. Called on the server's I/O thread, so none may block for
/// long.
class IAsciiService
{
public:
    using Command = ZuControl::ControlProtocol::ControlRegisterCommandId;

    virtual ~IAsciiService();

    /// Appends "name value decision". Returns false and appends nothing if there is no such output.
    virtual bool AppendReading(std::string& line, std::string_view name) = 0;

    /// Appends the number of outputs and their names.
    virtual void AppendNames(std::string& line) = 0;

    /// Appends the state of the system and the service as key=value words.
    virtual void AppendStatus(std::string& line) = 0;

    /// Begins an operation. Returns the ticket under which its end is reported, never 0. Throws if the operation is
    /// refused.
    virtual uint64 Begin(Command command, std::string_view argument) = 0;

    /// Begins a slow request. Returns the ticket under which its answer is reported, never 0. Throws if the request is
    /// refused.
    virtual uint64 Ask(AsciiRequest const& request) = 0;
};

} // namespace AsciiTcp
