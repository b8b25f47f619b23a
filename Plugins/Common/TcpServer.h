#pragma once

#include "Plugins/Common/ITcpConversation.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace ZuTls
{
class Context;
}

namespace PluginCommon
{

class AccessRules;
struct TcpCounters;

/// How a server shows who it is, and what it asks of its clients.
enum class TcpSecurity : int32
{
    OFF = 0,                ///< plain TCP
    SERVER_CERTIFICATE = 1, ///< TLS; every client is accepted
    CLIENT_CERTIFICATES = 2 ///< TLS; a client shows a certificate, which names its role
};

/// The address, the limits and the permitted clients of a server.
struct TcpSettings
{
    std::string address;                   ///< a numeric IPv4 or IPv6 address of this machine
    uint16 port = 0;                       ///< 0: a free port
    uint64 maxClients = 0;                 ///< a further client needs another one to make room
    uint64 idleTimeoutUsec = 0;            ///< a client that is silent for longer is dropped
    uint64 makeRoomAfterUsec = 10'000'000; ///< a client that is silent for longer makes room for a new one
    std::string allowedClients{};          ///< networks of the clients that may connect; empty: all clients
    std::string writers{};                 ///< networks of the clients that may write; empty: all clients
    bool isReadOnly = false;               ///< no client may write
    TcpSecurity security = TcpSecurity::OFF;
    std::string certificateFile{}; ///< this and the next two: paths of PEM files
    std::string keyFile{};
    std::string authorityFile{};              ///< authorities that sign the certificates of clients
    std::string revocationFile{};             ///< lists of revoked certificates of clients; empty: none are checked
    std::string roles{};                      ///< further texts of roles in the certificates of clients
    uint64 handshakeTimeoutUsec = 10'000'000; ///< a client that has not finished the TLS handshake by then is dropped

    bool HasSamePlace(TcpSettings const& other) const
    {
        return port == other.port && address == other.address;
    }
};

/// A TCP server: binds, listens, accepts clients up to a limit and checks their deadlines. One I/O thread serves all
/// clients; no client can block another. The owner makes the conversations, which implement the protocol.
///
/// When `maxClients` are connected, a new client displaces the client without progress for the longest time, if that
/// time is longer than `makeRoomAfterUsec`. If all clients are in use, each address has an equal share of the places: a
/// new client of an address below its share displaces a client of the address with most clients. Otherwise the server
/// closes the new connection at once. A client that may not connect is closed at once, too. A client in its TLS handshake
/// has a place as any other.
///
/// Ownership: counters and callbacks outlive the server. Threads: one thread at a time calls `Start`, `Apply`,
/// `ReadCertificatesAgain` and `Stop`; any thread may call the rest. Callbacks run on the I/O thread.
class TcpServer final
{
public:
    struct Service
    {
        std::string displayName; ///< begins the error texts
        std::string threadName;
        std::function<std::unique_ptr<ITcpConversation>()> makeConversation;
        std::function<void(uint64 count)> clientsChanged; ///< called after each connect and disconnect
        /// A client that takes no pending bytes for this time is dropped. Zero: the idle timeout.
        std::chrono::microseconds writeTimeout{0};
        /// Called for each client that is not admitted (`what` is "connection") and for each request that the client's
        /// role does not allow. Must not block. May be empty.
        std::function<void(ClientInfo const& client, std::string const& what, std::string const& reason)> refused{};
    };

    TcpServer(Service servedBy, TcpCounters& serverCounters);
    ~TcpServer(); ///< stops
    TcpServer(TcpServer const&) = delete;
    TcpServer& operator=(TcpServer const&) = delete;

    /// Starts listening. On failure nothing runs, and the text names address and port. Throws
    /// `Zu::Status::BAD_ARGUMENT` for an address that is invalid or not of this machine and for a list of networks with a
    /// faulty entry or a certificate that cannot be used, `Zu::Status::BUSY` for a port in use, `Zu::Status::FAILURE` for any other failure, and
    /// `Zu::Status::WRONG_STATE` while the server runs.
    void Start(TcpSettings const& settings);

    /// Closes all connections and ends the I/O thread. Does nothing if the server does not run. Must not be called on
    /// the I/O thread.
    void Stop() noexcept;

    bool IsRunning() const;

    /// Applies new settings. New limits take effect at once: `maxClients` for new clients, the idle timeout for all. A
    /// new address or port replaces the listener; the connections stay. A connected client that may not connect any more
    /// is dropped. Certificates are read again; a client stays connected unless new settings ask for other certificates of
    /// clients. If the settings are refused, throws as `Start` does, and the server goes on with its old settings. If
    /// the old address had to be given up for the new one and cannot be bound again, the text names both and the server
    /// has stopped. If the server does not run, only the lists of networks and roles are checked.
    void Apply(TcpSettings const& wanted);

    /// Reads the certificates of the present settings again; the clients stay connected. Throws as `Apply`, with the old
    /// certificates in force. Returns false if the server does not run or has no TLS.
    bool ReadCertificatesAgain();

    /// The address with the actual port: "127.0.0.1:1502", "[::1]:1502". Empty if the server does not run.
    std::string Endpoint() const;

    uint16 Port() const; ///< the actual port; 0 if the server does not run

    /// Whether the server runs on an address that is no loopback address, and every client may connect.
    bool IsOpenToNetwork() const;

    /// Asks the I/O thread to call `visit` for each conversation. `visit` returns whether the conversation may have new
    /// bytes to send. Returns false, and calls nothing, if the server does not run. While the server stops, visits may
    /// be dropped.
    bool PostToEach(std::function<bool(ITcpConversation&)> visit);

    /// Asks the I/O thread to close all connections. They count as dropped.
    void DisconnectAll();

private:
    class Core;

    std::shared_ptr<ZuTls::Context const> ReadCertificates(TcpSettings const& settings) const;
    void NoteApplied(TcpSettings const& settings, AccessRules const& rules);

    Service const service;
    TcpCounters& counters;
    std::unique_ptr<Core> core; // null while the server does not run
    TcpSettings applied;

    // A leaf. `reachable` is set to null before the core is destroyed, so that nothing is posted to a destroyed core.
    mutable Zu::Mutex reachLock;
    Core* reachable ZU_GUARDED_BY(reachLock) = nullptr;
    std::string endpoint ZU_GUARDED_BY(reachLock); // empty while the server does not run
    uint16 port ZU_GUARDED_BY(reachLock) = 0;
    bool isOpenToNetwork ZU_GUARDED_BY(reachLock) = false;
};

} // namespace PluginCommon
