#pragma once

#include "wApi/wTypes.h"

#include <utility> // the networking headers need it and do not include it

#include <boost/asio/ip/address.hpp>

#include <chrono>
#include <string>

namespace PluginCommon
{

/// Writes the refused clients of a server to the log: the first one at once, and then one line in PERIOD. Used on the I/O
/// thread only.
class RefusalLog final
{
public:
    static constexpr std::chrono::seconds PERIOD{10};

    explicit RefusalLog(std::string newDisplayName);
    ~RefusalLog();

    /// `reason` follows "closes a connection of 10.0.0.7: ".
    void Note(boost::asio::ip::address const& address, std::string const& reason);

private:
    std::string const displayName;
    std::chrono::steady_clock::time_point nextLine;
    uint64 untold = 0;
};

} // namespace PluginCommon
