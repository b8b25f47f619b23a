#include "Host/Tls/MachineNames.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <ifaddrs.h>
#include <memory>
#include <netinet/in.h>
#include <set>
#include <unistd.h>

namespace ZuHost
{

namespace
{

constexpr std::size_t MAX_ADDRESSES = 64; // keeps the certificate within one TLS record
constexpr char const* LOCAL = "localhost";

/// Empty for other families and for addresses that do not belong into a certificate.
std::string TextOf(sockaddr const* address)
{
    std::array<char, INET6_ADDRSTRLEN> text{};
    if (address != nullptr && address->sa_family == AF_INET)
    {
        auto const* const version4 = reinterpret_cast<sockaddr_in const*>(address);
        inet_ntop(AF_INET, &version4->sin_addr, text.data(), text.size());
    }
    else if (address != nullptr && address->sa_family == AF_INET6)
    {
        auto const* const version6 = reinterpret_cast<sockaddr_in6 const*>(address);
        if (!IN6_IS_ADDR_LINKLOCAL(&version6->sin6_addr))
        {
            inet_ntop(AF_INET6, &version6->sin6_addr, text.data(), text.size());
        }
    }
    return text.data();
}

std::set<std::string> InterfaceAddresses()
{
    std::set<std::string> addresses;
    ifaddrs* first = nullptr;
    if (getifaddrs(&first) != 0)
    {
        return addresses;
    }
    std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> const all(first, &freeifaddrs);
    for (ifaddrs const* one = first; one != nullptr; one = one->ifa_next)
    {
        if (std::string const text = TextOf(one->ifa_addr); !text.empty() && addresses.size() < MAX_ADDRESSES)
        {
            addresses.insert(text);
        }
    }
    return addresses;
}

/// Whether the text can stand in a certificate as a name.
bool IsName(std::string const& text)
{
    return !text.empty() && std::ranges::all_of(text, [](unsigned char character) {
        return std::isalnum(character) != 0 || character == '-' || character == '.' || character == '_';
    });
}

} // namespace

std::vector<std::string> MachineNames(std::string const& listenerAddress)
{
    std::vector<std::string> names;
    std::array<char, 256> hostName{};
    if (gethostname(hostName.data(), hostName.size() - 1) == 0 && IsName(hostName.data()) &&
        hostName.data() != std::string(LOCAL))
    {
        names.emplace_back(hostName.data());
    }
    names.emplace_back(LOCAL);
    std::set<std::string> addresses = InterfaceAddresses();
    addresses.insert({"127.0.0.1", "::1", listenerAddress});
    for (char const* const none : {"", "0.0.0.0", "::"})
    {
        addresses.erase(none);
    }
    names.insert(names.end(), addresses.begin(), addresses.end());
    return names;
}

} // namespace ZuHost
