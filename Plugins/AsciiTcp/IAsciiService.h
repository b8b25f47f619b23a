#pragma once

#include "Plugins/AsciiTcp/AsciiRequest.h"
#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"
#include "wApi/wTypes.h"

#include <string>
#include <string_view>

namespace AsciiTcp
{

/// What stands behind the conversations. All operations come on the server's I/O thread.
class IAsciiService
{
public:
    using Command = ZuControl::ControlProtocol::ControlRegisterCommandId;

    virtual ~IAsciiService();

    /// Appends "name value decision"; false, and nothing, when there is no such output.
    virtual bool AppendReading(std::string& line, std::string_view name) = 0;

    /// Appends the number of outputs and their names.
    virtual void AppendNames(std::string& line) = 0;

    /// Appends the state of system and service as words of the form key=value.
    virtual void AppendStatus(std::string& line) = 0;

    /// Begins the operation and gives the ticket under which its end will be told, which is never 0. Throws what refuses it.
    virtual uint64 Begin(Command command, std::string_view argument) = 0;

    /// Begins a request whose answer may take its time, and gives the ticket under which the answer will come, which is never
    /// 0. Throws what refuses it.
    virtual uint64 Ask(AsciiRequest const& request) = 0;
};

} // namespace AsciiTcp
