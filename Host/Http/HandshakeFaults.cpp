#include "Host/Http/HandshakeFaults.h"

#include "ZuApi/Logging.h"

namespace ZuHost
{

HandshakeFaults::HandshakeFaults() = default;
HandshakeFaults::~HandshakeFaults() = default;

void HandshakeFaults::Note(std::string const& source, std::string const& reason, uint64 nowUsec)
{
    uint64 total = 0;
    {
        Zu::MutexLock const guard(mutex);
        total = ++count;
        if (nowUsec < nextLineUsec)
        {
            return;
        }
        nextLineUsec = nowUsec + LOG_PERIOD_USEC;
    }
    ZU_LOG_WARNING("%1$llu TLS handshakes with REST clients have failed, the last one with %2$s: %3$s",
                   static_cast<unsigned long long>(total), source.c_str(), reason.c_str());
}

} // namespace ZuHost
