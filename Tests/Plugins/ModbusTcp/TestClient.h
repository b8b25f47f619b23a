#pragma once

#include "wApi/wTypes.h"

#include <optional>
#include <string>
#include <vector>

namespace ModbusTcp
{

/// A client over a plain blocking socket to 127.0.0.1. Every wait is bounded; what goes wrong throws std::runtime_error.
class TestClient final
{
public:
    using Bytes = std::vector<uint8>;
    using Registers = std::vector<uint16>;

    explicit TestClient(uint16 port);
    ~TestClient();
    TestClient(TestClient&& other) noexcept;
    TestClient& operator=(TestClient&&) = delete;

    void Send(Bytes const& bytes);

    /// Exactly this many bytes.
    Bytes Receive(std::size_t count);

    /// True when the server has closed the connection, with nothing sent before.
    bool IsClosedByServer();

    /// One request from its protocol data unit to that of the answer; checks the header.
    Bytes Ask(Bytes const& pdu);

    Registers Read(uint16 first, uint16 count);

    /// Function 16. Gives the exception code, 0 when it was taken.
    uint8 Write(uint16 first, Registers const& values);

private:
    int descriptor;
    uint16 transaction = 0;
};

/// Binds a port of 127.0.0.1 and listens on it for as long as it lives.
class OccupiedPort final
{
public:
    OccupiedPort();
    ~OccupiedPort();
    OccupiedPort(OccupiedPort const&) = delete;
    OccupiedPort& operator=(OccupiedPort const&) = delete;

    uint16 Number() const
    {
        return number;
    }

private:
    int descriptor;
    uint16 number;
};

} // namespace ModbusTcp
