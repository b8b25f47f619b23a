#pragma once

#include "Tests/Plugins/Common/TcpClient.h"

namespace ModbusTcp
{

using PluginCommon::OccupiedPort;

/// A client that speaks frames; its waits and failures are those of the plain one.
class TestClient final : public PluginCommon::TcpClient
{
public:
    using Registers = std::vector<uint16>;

    using TcpClient::TcpClient;

    /// One request from its protocol data unit to that of the answer; checks the header.
    Bytes Ask(Bytes const& pdu);

    Registers Read(uint16 first, uint16 count);

    /// Function 16. Gives the exception code, 0 when it was taken.
    uint8 Write(uint16 first, Registers const& values);

private:
    uint16 transaction = 0;
};

} // namespace ModbusTcp
