#include "Plugins/SparkplugMqtt/SparkplugParams.h"

#include "ZuApi/Exception.h"

#include <algorithm>
#include <cmath>

namespace SparkplugMqtt
{

namespace
{

constexpr char const* SERVER_RULE = "A server is HOST:PORT, or empty";
constexpr char const* ID_RULE = "An id has 1 to 128 bytes of UTF-8 without control characters, +, # and /";

constexpr uint32 DEFAULT_KEEP_ALIVE = 30;
constexpr uint32 DEFAULT_PERIOD = 500;
constexpr uint32 DEFAULT_STORE_MIB = 16;
constexpr uint32 LEAST_KEEP_ALIVE = 5;
constexpr uint64 BYTES_PER_MIB = 1024 * 1024;

constexpr char const* KEYS[] = {"server1",       "server2",         "server3",     "server4",       "server5",
                                "groupId",       "nodeId",          "deviceId",    "primaryHostId", "useTls",
                                "authorityFile", "certificateFile", "keyFile",     "user",          "keepAlive",
                                "period",        "deadBand",        "storeFolder", "storeSize"};

bool IsServer(std::string const& text)
{
    ServerAddress address;
    return text.empty() || ServerAddress::Read(text, address);
}

bool IsId(std::string const& text)
{
    return IsValidId(text);
}

bool IsIdOrEmpty(std::string const& text)
{
    return text.empty() || IsValidId(text);
}

/// The same name for the same node at each start, so that a server ends the older one of two connections of a node. It
/// has 18 letters and digits, which every server takes.
std::string ClientIdOf(NodeIds const& ids)
{
    constexpr char const* DIGITS = "0123456789abcdef";
    uint64 hash = 14695981039346656037U; // FNV-1a
    for (char const character : ids.group + "/" + ids.node)
    {
        hash = (hash ^ static_cast<uint8>(character)) * 1099511628211U;
    }
    std::string id = "zu";
    for (unsigned shift = 0; shift < 64; shift += 4)
    {
        id.push_back(DIGITS[hash >> shift & 15]);
    }
    return id;
}

} // namespace

CheckedText::CheckedText(Check newCheck, char const* newRule) : check(newCheck), rule(newRule)
{
}

CheckedText::~CheckedText() = default;

void CheckedText::CheckValidation(std::string const& candidate)
{
    Value::CheckValidation(candidate);
    if (!check(candidate))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s", rule);
    }
}

void CheckedText::Require() const
{
    if (!check(Get()))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s", rule);
    }
}

SparkplugParams::SparkplugParams()
    : Group(""),
      servers{CheckedText{IsServer, SERVER_RULE}, CheckedText{IsServer, SERVER_RULE},
              CheckedText{IsServer, SERVER_RULE}, CheckedText{IsServer, SERVER_RULE},
              CheckedText{IsServer, SERVER_RULE}},
      groupId(IsId, ID_RULE),
      nodeId(IsId, ID_RULE),
      deviceId(IsId, ID_RULE),
      primaryHostId(IsIdOrEmpty, ID_RULE)
{
    RegisterServers();
    Register("groupId", "Group Id", groupId);
    Register("nodeId", "Edge Node Id", nodeId);
    Register("deviceId", "Device Id", deviceId);
    Register("primaryHostId", "Primary Host Id", primaryHostId);
    Register("useTls", "TLS", useTls);
    Register("authorityFile", "File of the Certificate Authority", authorityFile);
    Register("certificateFile", "File of the Certificate", certificateFile);
    Register("keyFile", "File of the Key", keyFile);
    Register("user", "User", user);
    Register("keepAlive", "Keep Alive", keepAlive);
    Register("period", "Shortest Time Between Data Messages", period);
    Register("deadBand", "Dead Band", deadBand);
    Register("storeFolder", "Folder of the Store", storeFolder);
    Register("storeSize", "Size of the Store", storeSize);
    Bound(keepAlive, "s", LEAST_KEEP_ALIVE, LONGEST_KEEP_ALIVE);
    Bound(period, "ms", 0, LONGEST_PERIOD);
    Bound(storeSize, "MiB", 1, LARGEST_STORE);
    deadBand.EnableMinimum(true).GetMinimum().Set(0);
    SparkplugParams::SetDefaults();
}

SparkplugParams::~SparkplugParams()
{
    for (char const* key : KEYS)
    {
        Deregister(key); // before the members, to which the base class refers, are destroyed
    }
}

void SparkplugParams::SetDefaults()
{
    for (CheckedText& server : servers)
    {
        server.Set("");
    }
    servers.front().Set("127.0.0.1:1883");
    groupId.Set("ZuControl");
    nodeId.Set("node");
    deviceId.Set("sensor");
    primaryHostId.Set("");
    useTls.Set(false);
    for (auto* const text : {&authorityFile, &certificateFile, &keyFile, &user, &storeFolder})
    {
        text->Set("");
    }
    keepAlive.Set(DEFAULT_KEEP_ALIVE);
    period.Set(DEFAULT_PERIOD);
    deadBand.Set(0);
    storeSize.Set(DEFAULT_STORE_MIB);
}

EdgeNode::Settings SparkplugParams::Settings(std::string const& password) const
{
    EdgeNode::Settings settings;
    for (CheckedText const& server : servers)
    {
        server.Require();
        ServerAddress address;
        if (ServerAddress::Read(server.Get(), address))
        {
            settings.link.servers.push_back(address);
        }
    }
    if (settings.link.servers.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "Sparkplug needs the address of a server");
    }
    for (CheckedText const* const id : {&groupId, &nodeId, &deviceId, &primaryHostId})
    {
        id->Require();
    }
    settings.session.ids = {groupId.Get(), nodeId.Get(), deviceId.Get()};
    settings.session.primaryHostId = primaryHostId.Get();
    settings.session.serverCount = settings.link.servers.size();
    settings.link.clientId = ClientIdOf(settings.session.ids);
    settings.link.keepAliveSeconds = std::clamp(keepAlive.Get(), LEAST_KEEP_ALIVE, LONGEST_KEEP_ALIVE);
    settings.link.user = user.Get();
    settings.link.password = password;
    settings.link.useTls = useTls.Get();
    settings.link.authorityFile = authorityFile.Get();
    settings.link.certificateFile = certificateFile.Get();
    settings.link.keyFile = keyFile.Get();
    settings.storeFolder = storeFolder.Get();
    settings.storeBytes = std::clamp<uint64>(storeSize.Get(), 1, LARGEST_STORE) * BYTES_PER_MIB;
    return settings;
}

void SparkplugParams::Bound(Zu::Params::Value<uint32>& value, char const* unit, uint32 least, uint32 most)
{
    value.SetMinimum(least);
    value.EnableMaximum(true).GetMaximum().Set(most);
    value.EnableUnits(true).GetUnits().Set(unit);
}

void SparkplugParams::RegisterServers()
{
    constexpr char const* TITLES[] = {"Server 1", "Server 2", "Server 3", "Server 4", "Server 5"};
    for (std::size_t i = 0; i < servers.size(); ++i)
    {
        Register(KEYS[i], TITLES[i], servers[i]);
    }
}

} // namespace SparkplugMqtt
