#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <utility> // before Asio's headers, which use it without including it

#include <boost/asio/ip/address.hpp>

#include <map>

namespace ZuHost
{

/// Counts requests with a wrong token, slows their senders down and logs them, one line a minute.
///
/// Only refusals are slowed: a client with the right token is served at once, also behind a proxy that it shares with
/// the sender of wrong ones. All operations are thread-safe.
class WrongTokens final
{
public:
    static constexpr uint64 PERIOD_USEC = 1'000'000; ///< between two refusals to one source
    static constexpr uint64 PROMPT_REFUSALS = 5;     ///< so many come at once, for mistyped tokens
    static constexpr uint64 MAX_DELAY_USEC = 10 * PERIOD_USEC;
    static constexpr uint64 LOG_PERIOD_USEC = 60 * PERIOD_USEC;
    static constexpr std::size_t MAX_SOURCES = 1024; ///< remembered; further ones are slowed together

    WrongTokens();
    ~WrongTokens();

    WrongTokens(WrongTokens const&) = delete;
    WrongTokens& operator=(WrongTokens const&) = delete;

    /// Notes a request of `source` (see `ClientSource`) at `nowUsec`. Returns the time for which its refusal waits.
    uint64 Note(boost::asio::ip::address const& source, uint64 nowUsec);

    /// The number of noted requests.
    uint64 Count() const;

private:
    uint64 DelayOf(boost::asio::ip::address const& source, uint64 nowUsec) ZU_REQUIRES(mutex);

    mutable Zu::Mutex mutex; // a leaf: no other lock is taken under it
    uint64 count ZU_GUARDED_BY(mutex) = 0;
    uint64 nextLineUsec ZU_GUARDED_BY(mutex) = 0;
    /// When the next refusal to each source is due.
    std::map<boost::asio::ip::address, uint64> dueUsec ZU_GUARDED_BY(mutex);
};

} // namespace ZuHost
