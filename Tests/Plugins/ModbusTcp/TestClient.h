#pragma once

#include "Tests/Plugins/Common/TcpClient.h"

namespace ModbusTcp
{

using PluginCommon::OccupiedPort;

/// A Modbus client. Waits and failures are those of `TcpClient`.
class TestClient final : public PluginCommon::TcpClient
{
public:
    using Registers = std::vector<uint16>;

    using TcpClient::TcpClient;

    /// Sends a protocol data unit and returns that of the answer. Checks the header.
    Bytes Ask(Bytes const& pdu);

    Registers Read(uint16 first, uint16 count);

    /// Function 16. Returns the exception code, 0 after a success.
    uint8 Write(uint16 first, Registers const& values);

private:
    uint16 transaction = 0;
};

} // namespace ModbusTcp
