#pragma once

#include "wApi/wTypes.h"

#include <boost/circular_buffer.hpp>

#include <cstddef>
#include <utility>

namespace ZuHost
{

/// The clients whose answers are ready and are gathered while others are at hand to be served.
///
/// Waking a client that sleeps is dear, and the sender pays for it: answers that reach one client, or one machine, together wake
/// it once. Moments are those of wTime, in microseconds. It belongs to the thread on I/O duty and takes no memory.
template <typename Client>
class UnsentAnswers final
{
public:
    static constexpr std::size_t MOST = 64;
    static constexpr uint64 PATIENCE_USEC = 200; ///< the time to make a few documents

    /// Whether the answer of this client had better be kept for a moment; else it is to be sent now.
    bool Keep(Client const& client, bool areOthersAtHand, uint64 nowUsec)
    {
        bool const isFirst = kept.empty();
        if ((isFirst && !areOthersAtHand) || kept.full())
        {
            return false;
        }
        sinceUsec = isFirst ? nowUsec : sinceUsec;
        kept.push_back(client);
        return true;
    }

    bool IsEmpty() const noexcept
    {
        return kept.empty();
    }

    /// Whether one has to be sent, ahead of whatever else there is to do.
    bool IsDue(bool areOthersAtHand, uint64 nowUsec) const noexcept
    {
        return !kept.empty() && (!areOthersAtHand || nowUsec >= sinceUsec + PATIENCE_USEC);
    }

    /// The one that has waited longest; there is one.
    Client Take()
    {
        Client first = std::move(kept.front());
        kept.pop_front();
        return first;
    }

private:
    boost::circular_buffer<Client> kept{MOST};
    uint64 sinceUsec = 0; // of the first one that was kept since it was empty
};

} // namespace ZuHost
