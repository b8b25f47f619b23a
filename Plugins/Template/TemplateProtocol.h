#pragma once

#include "TemplateMetrics.h"
#include "TemplateParams.h"
#include "UdpSender.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"
#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "wApi/wMutex.h"

#include <atomic>
#include <string>
#include <unordered_map>

/// Sends a datagram for each result set, such as "0=25.000:1 3=50.000:1": output id, value in millimetres, decision.
///
/// Results arrive on the dispatcher's thread. The threads of the REST service and of the host set parameters, start and
/// stop. `lock` guards the state that they share.
class TemplateProtocol final : public ZuControl::ControlProtocol::ProtocolBase
{
public:
    /// The number of this protocol, unique among all protocols. Choose 200 or more for your own.
    static constexpr ZuControl::ZuEthernetProtocol PROTOCOL_ID{200};
    static constexpr char const* TYPE_NAME = "Template";
    static constexpr char const* DISPLAY_NAME = "UDP Template";

    explicit TemplateProtocol(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ);
    ~TemplateProtocol() override;

    void Start() override; ///< throws for an invalid address; the user sees the text
    void Stop() override;
    void ParamsUpdate() override;
    void ResetParams() override;
    void OutputsUpdate() override;
    void RegisterControlScanResultsHandler(ZuControl::IControlScanResults& results) override;
    void ProcessResultSets(void* resultSets) override;
    Zu::Properties::Structure& UpdateMetrics() override;
    void ResetMetrics() override;

private:
    void SendSet(void const* resultSet);

    TemplateParams params;
    TemplateMetrics metrics;
    ZuControl::ControlProtocol::StandardProtocolOutputMap outputs;
    ZuControl::ControlProtocol::ProtocolOutputActionTarget outputsActionTarget;
    std::atomic<uint64> datagramCount{0};
    std::atomic<uint64> dropCount{0};

    Zu::Mutex lock; // a leaf
    bool isRunning ZU_GUARDED_BY(lock) = false;
    UdpSender sender ZU_GUARDED_BY(lock);
    std::unordered_map<uint64, uint16> outputIds ZU_GUARDED_BY(lock); // by the number of the data source
    std::string text ZU_GUARDED_BY(lock);                             // of a datagram; kept to reuse its memory

    Zu::Mutex metricsLock; // held while the metrics record is updated
};
