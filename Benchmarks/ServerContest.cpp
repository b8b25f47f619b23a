#include "ServerContest.h"

#include "Stopwatch.h"

#include <utility>

namespace ZuBench
{

ServerContest::ServerContest(std::string const& name, std::string newRequest, LoadClients::LengthOf newLengthOf,
                             ssl_ctx_st* newTls)
    : request(std::move(newRequest)), lengthOf(std::move(newLengthOf)), tls(newTls), contest(name)
{
}

ServerContest::~ServerContest() = default;

std::string ServerContest::Enter(std::string const& contender, ServerProcess::Starter const& start)
{
    Contender& entered = contenders.emplace_back(start, request, lengthOf, tls);
    contest.Enter(contender, [&entered] {
        constexpr uint64 REQUESTS = 2000;
        Stopwatch const watch(entered.server.Clock());
        entered.clients.Ask(REQUESTS);
        return static_cast<double>(watch.Nanoseconds()) / REQUESTS;
    });
    return entered.clients.Ask(1);
}

void ServerContest::Run(uint64 rounds)
{
    contest.Run(rounds);
}

} // namespace ZuBench
