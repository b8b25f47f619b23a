#include "Plugins/Common/AccessList.h"

#include "ZuApi/Exception.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <string>

namespace PluginCommon
{

namespace ip = boost::asio::ip;

namespace
{

constexpr std::size_t MOST_SHOWN_BYTES = 64; // of a faulty entry
constexpr unsigned BYTE_BITS = 8;
constexpr std::string_view BLANKS = " \t\r\n";

[[noreturn]] void Refuse(std::string_view entry, char const* title, char const* reason)
{
    ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s: \"%s\" %s", title, std::string(entry.substr(0, MOST_SHOWN_BYTES)).c_str(),
             reason);
}

/// Whether all bits behind the first `prefixBits` bits of `bytes` are 0.
bool IsZeroBehind(std::span<uint8 const> bytes, unsigned prefixBits)
{
    for (unsigned bit = prefixBits; bit < BYTE_BITS * bytes.size(); ++bit)
    {
        if ((bytes[bit / BYTE_BITS] & (0x80u >> bit % BYTE_BITS)) != 0)
        {
            return false;
        }
    }
    return true;
}

} // namespace

std::string_view Trimmed(std::string_view text)
{
    std::size_t const begin = text.find_first_not_of(BLANKS);
    return begin == std::string_view::npos ? std::string_view{}
                                           : text.substr(begin, text.find_last_not_of(BLANKS) + 1 - begin);
}

std::vector<std::string_view> ListEntries(std::string_view text)
{
    std::vector<std::string_view> entries;
    if (Trimmed(text).empty())
    {
        return entries;
    }
    for (std::size_t begin = 0; begin != std::string_view::npos;)
    {
        std::size_t const comma = text.find(',', begin);
        entries.push_back(Trimmed(text.substr(begin, comma - begin)));
        begin = comma == std::string_view::npos ? comma : comma + 1;
    }
    return entries;
}

ip::address Unmapped(ip::address const& address)
{
    return address.is_v6() && address.to_v6().is_v4_mapped() ? make_address_v4(ip::v4_mapped, address.to_v6())
                                                             : address;
}

AccessList::AccessList() = default;

AccessList::AccessList(std::string_view text, char const* title)
{
    for (std::string_view const entry : ListEntries(text))
    {
        if (networks.size() == MOST_NETWORKS)
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s: there are more than %u networks", title,
                     static_cast<unsigned>(MOST_NETWORKS));
        }
        networks.push_back(Parse(entry, title));
    }
}

AccessList::~AccessList() = default;

bool AccessList::Contains(Address const& address) const
{
    Network const client = NetworkOf(Unmapped(address));
    return std::ranges::any_of(networks, [&client](Network const& network) { return Covers(network, client); });
}

/// The network of this address alone.
AccessList::Network AccessList::NetworkOf(Address const& address)
{
    Network network{.bytes = {}, .prefixBits = 0, .isVersion4 = address.is_v4()};
    if (network.isVersion4)
    {
        std::ranges::copy(address.to_v4().to_bytes(), network.bytes.begin());
    }
    else
    {
        network.bytes = address.to_v6().to_bytes();
    }
    network.prefixBits = network.isVersion4 ? 32 : 128;
    return network;
}

AccessList::Network AccessList::Parse(std::string_view entry, char const* title)
{
    std::size_t const slash = entry.find('/');
    boost::system::error_code error;
    auto const address = ip::make_address(std::string(entry.substr(0, slash)), error);
    if (error || entry.find('%') != std::string_view::npos)
    {
        Refuse(entry, title, "is neither an IP address nor a network such as 192.168.0.0/24 or fd00::/8");
    }
    Network network = NetworkOf(address);
    if (slash == std::string_view::npos)
    {
        return NetworkOf(Unmapped(address));
    }
    std::string_view const digits = entry.substr(slash + 1);
    unsigned prefixBits = 0;
    auto const [end, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), prefixBits);
    if (fault != std::errc() || std::to_string(prefixBits) != digits || prefixBits > network.prefixBits)
    {
        Refuse(entry, title,
               network.isVersion4 ? "has no prefix length from 0 to 32" : "has no prefix length from 0 to 128");
    }
    if (!IsZeroBehind(std::span(network.bytes).first(network.prefixBits / BYTE_BITS), prefixBits))
    {
        Refuse(entry, title, "is an address within a network: behind the prefix all bits of a network are 0");
    }
    constexpr unsigned MAPPED_BITS = 96; // the part of "::ffff:10.0.0.0" before the IPv4 address
    if (!network.isVersion4 && address.to_v6().is_v4_mapped() && prefixBits >= MAPPED_BITS)
    {
        network = NetworkOf(Unmapped(address));
        prefixBits -= MAPPED_BITS;
    }
    network.prefixBits = static_cast<uint8>(prefixBits);
    return network;
}

bool AccessList::Covers(Network const& network, Network const& address)
{
    if (network.isVersion4 != address.isVersion4)
    {
        return false;
    }
    std::size_t const wholeBytes = network.prefixBits / BYTE_BITS;
    unsigned const restBits = network.prefixBits % BYTE_BITS;
    if (!std::ranges::equal(std::span(network.bytes).first(wholeBytes), std::span(address.bytes).first(wholeBytes)))
    {
        return false;
    }
    return restBits == 0 || (network.bytes[wholeBytes] ^ address.bytes[wholeBytes]) >> (BYTE_BITS - restBits) == 0;
}

} // namespace PluginCommon
