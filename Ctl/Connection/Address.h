#pragma once

#include <cstdint>
#include <string>

namespace ZuCtl
{

/// The address of a sensor, such as https://10.0.0.7:8443.
struct Address
{
    bool isEncrypted = false;
    std::string host; ///< a name or an address; IPv6 without brackets
    std::uint16_t port = 8080;

    /// Reads "HOST", "HOST:PORT" or "http[s]://HOST[:PORT][/]". Without a port: 8080, and 8443 for https.
    /// Throws `Failure` with `ExitStatus::USAGE`.
    static Address Parse(std::string const& text);

    std::string Url() const;    ///< without a slash at the end
    bool IsThisMachine() const; ///< a loopback address or localhost
    bool operator==(Address const&) const = default;
};

/// `text` with each byte that has a meaning in an address as %XX: for one segment of a path.
std::string Escaped(std::string const& text);

} // namespace ZuCtl
