#include "Plugins/Common/RefusalLog.h"

#include "Plugins/Common/AccessList.h"
#include "ZuApi/Logging.h"

namespace PluginCommon
{

RefusalLog::RefusalLog(std::string newDisplayName, Tell newTell)
    : displayName(std::move(newDisplayName)), tell(std::move(newTell))
{
}

RefusalLog::~RefusalLog() = default;

void RefusalLog::Note(boost::asio::ip::address const& address, std::string const& reason)
{
    std::string const client = Unmapped(address).to_string();
    if (tell)
    {
        tell({client, ZuCommon::Role::NONE}, "connection", reason);
    }
    ++untold;
    auto const now = std::chrono::steady_clock::now();
    if (now >= nextLine)
    {
        nextLine = now + PERIOD;
        ZU_LOG_USER_WARNING("%s closes a connection of %s: %s (%u since the last such line)", displayName.c_str(),
                            client.c_str(), reason.c_str(), static_cast<unsigned>(std::exchange(untold, 0)));
    }
}

void RefusalLog::NoteRequest(ClientInfo const& client, std::string const& request) const
{
    if (tell)
    {
        tell(client, request,
             client.role == ZuCommon::Role::NONE ? "the client has no role" : "the client's role does not allow it");
    }
}

} // namespace PluginCommon
