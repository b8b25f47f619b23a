#pragma once

#include "Plugins/Common/TextLimits.h"
#include "Plugins/SparkplugMqtt/EdgeNode.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wTypes.h"

#include <array>
#include <string>

namespace SparkplugMqtt
{

/// A text parameter that takes some texts only.
class CheckedText final : public Zu::Params::Value<std::string>
{
public:
    using Check = bool (*)(std::string const& text);

    /// `newRule` is a literal, the text of a refusal.
    CheckedText(Check newCheck, char const* newRule);
    ~CheckedText() override;
    CheckedText(CheckedText const&) = delete;
    CheckedText& operator=(CheckedText const&) = delete;

    void CheckValidation(std::string const& candidate) override;

    /// Throws `Zu::Status::BAD_ARGUMENT` if the present value is not allowed: parameters from a job are not validated.
    void Require() const;

private:
    Check const check;
    char const* const rule;
};

/// The settings of the service.
struct SparkplugParams final : public Zu::Params::Group
{
public:
    static constexpr std::size_t MOST_SERVERS = 5;
    static constexpr uint32 LONGEST_PATH = 1024;
    static constexpr uint32 LONGEST_KEEP_ALIVE = 3600;  ///< seconds
    static constexpr uint32 LONGEST_PERIOD = 3'600'000; ///< milliseconds
    static constexpr uint32 LARGEST_STORE = 4096;       ///< MiB

    SparkplugParams();
    ~SparkplugParams() override;

    void SetDefaults();

    /// The settings of a node. Throws `Zu::Status::BAD_ARGUMENT` for ids or servers that are not allowed, and without a
    /// server.
    EdgeNode::Settings Settings(std::string const& password) const;

    std::array<CheckedText, MOST_SERVERS> servers; ///< "host:port"; empty ones are left out
    CheckedText groupId;
    CheckedText nodeId;
    CheckedText deviceId;
    CheckedText primaryHostId; ///< empty: the node waits for no host
    Zu::Params::Value<bool> useTls;
    PluginCommon::LimitedText authorityFile{LONGEST_PATH}; ///< empty: the authorities of the system
    PluginCommon::LimitedText certificateFile{LONGEST_PATH};
    PluginCommon::LimitedText keyFile{LONGEST_PATH};
    PluginCommon::LimitedText user{PluginCommon::MOST_TEXT_BYTES};
    Zu::Params::Value<uint32> keepAlive; ///< seconds
    Zu::Params::Value<uint32> period;    ///< milliseconds between two data messages of the outputs
    Zu::Params::Value<double> deadBand;
    PluginCommon::LimitedText storeFolder{LONGEST_PATH}; ///< empty: the store is in memory
    Zu::Params::Value<uint32> storeSize;                 ///< MiB

private:
    static void Bound(Zu::Params::Value<uint32>& value, char const* unit, uint32 least, uint32 most);
    void RegisterServers();
};

} // namespace SparkplugMqtt
