#include "Host/Http/ClientSource.h"

#include <algorithm>

namespace ZuHost
{

namespace ip = boost::asio::ip;

ip::address ClientSource(ip::address const& address)
{
    if (!address.is_v6())
    {
        return address;
    }
    ip::address_v6 const whole = address.to_v6();
    if (whole.is_v4_mapped())
    {
        return ip::make_address_v4(ip::v4_mapped, whole);
    }
    constexpr std::size_t NETWORK_BYTES = 8;
    auto bytes = whole.to_bytes();
    std::fill(bytes.begin() + NETWORK_BYTES, bytes.end(), static_cast<unsigned char>(0));
    return ip::address_v6(bytes);
}

} // namespace ZuHost
