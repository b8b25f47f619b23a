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

/// Sends a datagram for each result set: "0=25.000:1 3=50.000:1", output id, value in millimetres, decision.
///
/// Results come on the dispatcher's thread; parameters, start and stop on those of the REST service and of the host. What
/// both touch stands behind `lock`.
class TemplateProtocol final : public ZuControl::ControlProtocol::ProtocolBase
{
public:
    /// Of this protocol among all; those of your own begin at 200.
    static constexpr ZuControl::ZuEthernetProtocol PROTOCOL_ID{200};
    static constexpr char const* TYPE_NAME = "Template";
    static constexpr char const* DISPLAY_NAME = "UDP Template";

    explicit TemplateProtocol(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ);
    ~TemplateProtocol() override;

    void Start() override; ///< throws when the address is none: the user sees the text
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
    std::string text ZU_GUARDED_BY(lock);                             // of a datagram; kept for its memory

    Zu::Mutex metricsLock; // one update of the metrics record at a time
};
