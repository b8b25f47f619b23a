#pragma once

#include "wApi/wTypes.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace ZuBench
{

/// Clients on one thread that each repeat the same request, one at a time. Throws std::system_error.
class LoadClients final
{
public:
    /// The length of the answer that begins with `begun`; 0 until it is known.
    using LengthOf = std::function<std::size_t(std::string_view begun)>;

    LoadClients(uint16 port, uint64 count, std::string newRequest, LengthOf newLengthOf);
    ~LoadClients();

    LoadClients(LoadClients const&) = delete;
    LoadClients& operator=(LoadClients const&) = delete;

    /// Sends requests until `answers` answers have arrived in all. Returns the last answer.
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
