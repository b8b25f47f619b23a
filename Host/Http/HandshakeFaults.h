#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuHost
{

/// Counts TLS handshakes that failed and logs them, one line a minute. All operations are thread-safe.
class HandshakeFaults final
{
public:
    static constexpr uint64 LOG_PERIOD_USEC = 60'000'000;

    HandshakeFaults();
    ~HandshakeFaults();

    HandshakeFaults(HandshakeFaults const&) = delete;
    HandshakeFaults& operator=(HandshakeFaults const&) = delete;

    /// Notes a handshake with a client at `source`. `reason` is a part of a sentence: see `ZuTls::Explain`.
    void Note(std::string const& source, std::string const& reason, uint64 nowUsec);

private:
    Zu::Mutex mutex; // a leaf
    uint64 count ZU_GUARDED_BY(mutex) = 0;
    uint64 nextLineUsec ZU_GUARDED_BY(mutex) = 0;
};

} // namespace ZuHost
