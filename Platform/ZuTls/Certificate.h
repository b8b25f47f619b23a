#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

struct ssl_st;

namespace ZuTls
{

/// The facts of an X.509 certificate, as a copy that needs neither the file nor the connection that it came from.
struct ZUPLATFORM_API Certificate
{
    Certificate();
    ~Certificate();
    Certificate(Certificate const&);
    Certificate(Certificate&&) noexcept;
    Certificate& operator=(Certificate const&);
    Certificate& operator=(Certificate&&) noexcept;

    std::string subject;            ///< "CN=plc-7,O=Plant"; control characters are escaped
    std::string issuer;             ///< as `subject`
    std::vector<std::string> names; ///< names and IP addresses of hosts for which it is valid
    std::string fingerprint;        ///< "SHA256:0A:1B:...", over `der`
    std::string der;                ///< the certificate's own bytes
    int64 fromUtcSeconds = 0;       ///< seconds since 1970
    int64 untilUtcSeconds = 0;      ///< as above: it is valid before this moment
    bool isAuthority = false;       ///< it may sign other certificates

    /// The text of the extension with the object identifier `oid` ("1.3.6.1.4.1.50316.802.1"). Nothing if there is no such
    /// extension, if it occurs twice, or if its value is no ASN.1 UTF8String of valid UTF-8 without null characters.
    std::optional<std::string> TextExtension(std::string const& oid) const;

    /// Throws `Zu::Status::BAD_ARGUMENT` if the bytes are no certificate.
    static Certificate FromDer(std::string const& bytes);

    /// All certificates of a PEM file, in their order. Throws `Zu::Status::BAD_ARGUMENT`, with a sentence that names the
    /// file, if the file cannot be read, has no certificate or has a damaged one.
    static std::vector<Certificate> ReadFile(std::filesystem::path const& file);

    /// The certificate that the peer of a connection has shown and proven to own. Nothing before the end of the
    /// handshake, and if the peer has shown none. Call it on the thread that uses the connection.
    static std::optional<Certificate> OfPeer(ssl_st const& connection);
};

/// A moment as the day in UTC: "2026-01-02".
ZUPLATFORM_API std::string DayText(int64 utcSeconds);

} // namespace ZuTls
