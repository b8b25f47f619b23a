#pragma once

#include "Tests/Plugins/Common/TcpClient.h"
#include "ZuTls/Context.h"

#include <memory>
#include <string>

struct ssl_st;

namespace PluginCommon
{

/// A TLS client with a blocking socket to 127.0.0.1. Every wait is bounded. Every failure throws std::runtime_error.
class TlsClient final
{
public:
    /// Connects and shakes hands. `highestVersion` is a number of OpenSSL; 0 for the highest. `receiveBufferBytes` is the
    /// size of the socket's receive buffer; 0 selects the default of the system.
    TlsClient(uint16 port, ZuTls::Context const& context, int highestVersion = 0, char const* ownAddress = "127.0.0.1",
              int receiveBufferBytes = 0);
    ~TlsClient(); ///< closes the connection without a word
    TlsClient(TlsClient const&) = delete;
    TlsClient& operator=(TlsClient const&) = delete;

    void Send(std::string const& bytes);

    /// Receives exactly this many bytes.
    std::string Receive(std::size_t count);

    /// Tells the server that nothing more follows.
    void EndSending();

    /// Whether the server has ended the connection properly, without sending a byte before.
    bool IsEndedByServer();

    /// Whether the server has ended the connection in any way, without sending a byte before.
    bool IsClosedByServer();

    /// The subject of the server's certificate.
    std::string ServerSubject() const;

    ssl_st& Session() const
    {
        return *session;
    }

private:
    TcpClient client;
    std::unique_ptr<ssl_st, void (*)(ssl_st*)> session;
};

} // namespace PluginCommon
