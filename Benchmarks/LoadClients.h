#pragma once

#include "wApi/wTypes.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace ZuBench
{

/// Clients that each ask the same over and over, a request at a time, from one thread. Throws std::system_error.
class LoadClients final
{
public:
    /// The length of the answer that `begun` is the beginning of; 0 as long as that cannot be told.
    using LengthOf = std::function<std::size_t(std::string_view begun)>;

    LoadClients(uint16 port, uint64 count, std::string newRequest, LengthOf newLengthOf);
    ~LoadClients();

    LoadClients(LoadClients const&) = delete;
    LoadClients& operator=(LoadClients const&) = delete;

    /// Asks until so many answers have come in all, and gives the last one.
    std::string Ask(uint64 answers);

private:
    struct Client
    {
        int socket = -1;
        std::string received;
    };

    void Send(Client const& client) const;
    bool Receive(Client& client) const;

    std::string const request;
    LengthOf const lengthOf;
    int poll = -1;
    std::vector<Client> clients;
};

} // namespace ZuBench
