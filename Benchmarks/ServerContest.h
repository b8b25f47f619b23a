#pragma once

#include "Contest.h"
#include "LoadClients.h"
#include "ServerProcess.h"

#include <list>
#include <string>

namespace ZuBench
{

/// Servers that answer the same request, each in a process of its own. The figure is the CPU nanoseconds of a server
/// for one request, its threads together.
class ServerContest final
{
public:
    static constexpr uint64 CLIENTS = 16;

    /// With `newTls` the clients speak TLS.
    ServerContest(std::string const& name, std::string newRequest, LoadClients::LengthOf newLengthOf,
                  ssl_ctx_st* newTls = nullptr);
    ~ServerContest();

    ServerContest(ServerContest const&) = delete;
    ServerContest& operator=(ServerContest const&) = delete;

    /// Starts the server and returns its answer.
    std::string Enter(std::string const& contender, ServerProcess::Starter const& start);

    void Run(uint64 rounds);

private:
    struct Contender
    {
        Contender(ServerProcess::Starter const& start, std::string const& request,
                  LoadClients::LengthOf const& lengthOf, ssl_ctx_st* tls)
            : server(start), clients(server.Port(), CLIENTS, request, lengthOf, tls)
        {
        }

        ServerProcess server;
        LoadClients clients;
    };

    std::string const request;
    LoadClients::LengthOf const lengthOf;
    ssl_ctx_st* const tls;
    Contest contest;
    std::list<Contender> contenders;
};

} // namespace ZuBench
