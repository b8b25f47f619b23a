#pragma once

#include "ZuTls/Certificate.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

struct ssl_ctx_st;
struct ssl_st;

namespace ZuTls
{

enum class Side
{
    SERVER,
    CLIENT
};

/// The proof that a peer must show.
enum class PeerProof
{
    NOTHING,
    CERTIFICATE ///< a valid certificate of an accepted authority
};

/// The files and requirements of one end of TLS connections. All files are PEM files.
struct Settings
{
    std::filesystem::path certificateFile; ///< own certificate, then the authorities between it and the root
    std::filesystem::path keyFile;         ///< its private key, without password and not accessible to every user
    std::filesystem::path authoritiesFile; ///< authorities that sign peers; empty, for a client: those of the system
    PeerProof peerProof = PeerProof::NOTHING;
    std::string peerName; ///< for a client: the name or IP address that must be in the server's certificate
    /// Lists of revoked certificates. If there are any, each authority that signs a peer's certificate needs a list. Empty:
    /// no certificate counts as revoked.
    std::filesystem::path revocationsFile{};
};

/// The clocks of a context. An empty function means the clock of the machine.
struct Clock
{
    std::function<int64()> utcSeconds;     ///< since 1970: for the validity of certificates
    std::function<uint64()> monotonicUsec; ///< for the age of the keys of session tickets
};

/// The certificate and the rules of one end of TLS connections, made from settings.
///
/// Accepts TLS 1.2 with ECDHE and AEAD suites, and TLS 1.3. There is no renegotiation, no compression and no early data.
/// A server that asks for no certificate gives session tickets. Their keys are replaced every hour, and the previous keys
/// are read for one more hour. A server that asks for certificates gives no tickets: each connection shows its certificate
/// anew. Peers' certificates are checked against the clock at each handshake.
/// Ownership: connections share the inner OpenSSL object and may outlive the context, so a context can be replaced while
/// connections exist.
/// Threads: all operations are thread-safe. One connection is used by one thread at a time.
class ZUPLATFORM_API Context final
{
public:
    /// The files are read here and never again. Throws `Zu::Status::BAD_ARGUMENT` with a sentence for the user, such as
    /// "the certificate host.pem ended on 2026-01-02".
    Context(Side side, Settings const& settings, Clock const& clock = Clock());
    ~Context();

    Context(Context const&) = delete;
    Context& operator=(Context const&) = delete;

    /// For the constructor of a connection, which takes a reference of its own.
    ssl_ctx_st* Native() const noexcept;

    /// Prepares a new connection of a client: the server is told which name the client means. Does nothing for a server.
    void Prepare(ssl_st& connection) const;

    /// The own certificate. Nothing for a client without one.
    std::optional<Certificate> const& Own() const noexcept;

private:
    std::optional<Certificate> own;
    std::string peerName;
    std::shared_ptr<ssl_ctx_st> native;
};

/// Why a handshake of `connection` failed, as a part of a sentence: "the certificate of CN=plc-7 ended on 2026-01-02".
/// `opensslError` is the number that OpenSSL or Asio (`error_code::value`) reports. Call it on the thread that uses the
/// connection.
ZUPLATFORM_API std::string Explain(uint64 opensslError, ssl_st const& connection);

} // namespace ZuTls
