#include "Plugins/Common/RefusalLog.h"

#include "Plugins/Common/AccessList.h"
#include "ZuApi/Logging.h"

namespace PluginCommon
{

RefusalLog::RefusalLog(std::string newDisplayName) : displayName(std::move(newDisplayName))
{
}

RefusalLog::~RefusalLog() = default;

void RefusalLog::Note(boost::asio::ip::address const& address, std::string const& reason)
{
    ++untold;
    auto const now = std::chrono::steady_clock::now();
    if (now >= nextLine)
    {
        nextLine = now + PERIOD;
        ZU_LOG_USER_WARNING("%s closes a connection of %s: %s (%u since the last such line)", displayName.c_str(),
                            Unmapped(address).to_string().c_str(), reason.c_str(),
                            static_cast<unsigned>(std::exchange(untold, 0)));
    }
}

} // namespace PluginCommon
