#pragma once

#include "wApi/wTypes.h"

#include <utility> // the networking headers need it and do not include it

#include <boost/asio/ip/address.hpp>

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

namespace PluginCommon
{

/// The text without the blanks around it.
std::string_view Trimmed(std::string_view text);

/// The entries of a text such as "a, b, c", without the blanks around them. A text of blanks has no entry.
std::vector<std::string_view> ListEntries(std::string_view text);

/// An IPv4 address that an IPv6 socket shows as "::ffff:10.0.0.7" becomes the IPv4 address; any other stays as it is.
boost::asio::ip::address Unmapped(boost::asio::ip::address const& address);

/// A list of networks in CIDR notation, such as "192.168.0.0/24, 10.0.0.7, fd00::/8". An address without a prefix length
/// is a network of one address. An IPv4 client is compared with IPv4 networks only, and an IPv6 client with IPv6
/// networks.
class AccessList final
{
public:
    using Address = boost::asio::ip::address;

    static constexpr std::size_t MOST_NETWORKS = 64;

    AccessList();

    /// Throws `Zu::Status::BAD_ARGUMENT` with a text that names `title` and the faulty entry.
    AccessList(std::string_view text, char const* title);

    ~AccessList();

    bool IsEmpty() const
    {
        return networks.empty();
    }

    bool Contains(Address const& address) const;

private:
    struct Network
    {
        std::array<uint8, 16> bytes; ///< an IPv4 address has the first four
        uint8 prefixBits;
        bool isVersion4;
    };

    static Network NetworkOf(Address const& address);
    static Network Parse(std::string_view entry, char const* title);
    static bool Covers(Network const& network, Network const& address);

    std::vector<Network> networks;
};

} // namespace PluginCommon
