#pragma once

#include "Plugins/Common/TcpServiceProtocol.h"
#include "TemplateConversation.h"
#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"
#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "wApi/wMutex.h"

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

/// The settings of the service: those of every TCP service, and one of its own. Each member appears in the protocol's
/// document and schema, and is saved with the job.
struct TemplateParams final : public PluginCommon::TcpParams
{
    TemplateParams();
    ~TemplateParams() override;

    void SetDefaults() override;

    Zu::Params::Value<uint32> decimals; ///< digits after the decimal point, 0 to 9
};

/// The metrics of the service. Kind and title describe each number.
struct TemplateMetrics final : public PluginCommon::TcpMetrics
{
    explicit TemplateMetrics(TemplateCounters const& counters);
    ~TemplateMetrics() override;
};

/// Sends each client a line for each result set, such as "0=25.000:1 3=50.000:1": output id, value in millimetres,
/// decision. The requests "start" and "stop" start and stop the scan.
///
/// Results arrive on the dispatcher's thread. The I/O thread of the kit runs the conversations. Threads of the REST
/// service and of the host set parameters and outputs. `lock` guards the state that they share.
class TemplateProtocol final : public PluginCommon::TcpServiceProtocol
{
public:
    /// The number of this protocol, unique among all protocols. Choose 200 or more for your own.
    static constexpr ZuControl::ZuEthernetProtocol PROTOCOL_ID{200};
    static constexpr char const* TYPE_NAME = "Template";
    static constexpr char const* DISPLAY_NAME = "Line Template";

    explicit TemplateProtocol(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ);
    ~TemplateProtocol() override;

    void OutputsUpdate() override;
    void ProcessResultSets(void* resultSets) override;

private:
    std::unique_ptr<PluginCommon::ITcpConversation> MakeConversation() override;
    void ApplyOwnParams() override;

    std::string Answer(std::string_view request);
    void SendSet(void const* resultSet);
    std::string LineOf(void const* resultSet);

    TemplateParams params;
    TemplateCounters counters;
    TemplateMetrics metrics{counters};
    ZuControl::ControlProtocol::StandardProtocolOutputMap outputs;
    PluginCommon::LimitedActions<ZuControl::ControlProtocol::ProtocolOutputActionTarget> outputsActionTarget;
    std::atomic<int> decimals{0}; // what the dispatcher's thread uses; publishes no other data

    Zu::Mutex lock;                                                   // a leaf
    std::unordered_map<uint64, uint16> outputIds ZU_GUARDED_BY(lock); // by the number of the data source
};
