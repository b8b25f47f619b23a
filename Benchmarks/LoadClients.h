#pragma once

#include "wApi/wTypes.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct ssl_ctx_st;
struct ssl_st;

namespace ZuBench
{

/// Clients on one thread that each repeat the same request, one at a time. Throws std::system_error.
class LoadClients final
{
public:
    /// The length of the answer that begins with `begun`; 0 until it is known.
    using LengthOf = std::function<std::size_t(std::string_view begun)>;

    /// With `tls` the clients speak TLS.
    LoadClients(uint16 port, uint64 count, std::string newRequest, LengthOf newLengthOf, ssl_ctx_st* tls = nullptr);
    ~LoadClients();

    LoadClients(LoadClients const&) = delete;
    LoadClients& operator=(LoadClients const&) = delete;

    /// Sends requests until `answers` answers have arrived in all. Returns the last answer.
    std::string Ask(uint64 answers);

private:
    struct Client
    {
        int socket = -1;
        std::shared_ptr<ssl_st> tls;
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
