#include "Host/Http/RequestOrigin.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cctype>
#include <string>

namespace ZuHost::RequestOrigin
{

namespace
{

bool IsSameText(std::string_view one, std::string_view other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); });
}

bool IsPort(std::string_view text)
{
    return !text.empty() && text.size() <= 5 && text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// The host without its port and without brackets; empty when it is not well formed.
std::string NameOf(std::string_view host)
{
    bool const isBracketed = host.starts_with('[');
    std::size_t const end = isBracketed ? host.find(']') : std::min(host.find(':'), host.size());
    if (end == std::string_view::npos)
    {
        return {};
    }
    std::string_view const rest = host.substr(end + (isBracketed ? 1 : 0));
    if (!rest.empty() && !(rest.starts_with(':') && IsPort(rest.substr(1))))
    {
        return {};
    }
    return std::string(isBracketed ? host.substr(1, end - 1) : host.substr(0, end));
}

} // namespace

bool IsThisMachine(std::string_view host)
{
    constexpr unsigned char LOOPBACK_NETWORK = 127;
    std::string const name = NameOf(host);
    in_addr version4{};
    in6_addr version6{};
    if (inet_pton(AF_INET, name.c_str(), &version4) == 1)
    {
        return (ntohl(version4.s_addr) >> 24U) == LOOPBACK_NETWORK;
    }
    if (inet_pton(AF_INET6, name.c_str(), &version6) == 1)
    {
        return IN6_IS_ADDR_LOOPBACK(&version6);
    }
    return IsSameText(name, "localhost");
}

bool IsOwn(std::string_view origin, std::string_view host, bool isEncrypted)
{
    std::string_view const scheme = isEncrypted ? "https://" : "http://";
    return origin.starts_with(scheme) && IsSameText(origin.substr(scheme.size()), host);
}

} // namespace ZuHost::RequestOrigin
