#pragma once

#include "Plugins/Common/StateFetcher.h"
#include "Plugins/SparkplugMqtt/CommandRunner.h"
#include "Plugins/SparkplugMqtt/EdgeNode.h"
#include "Plugins/SparkplugMqtt/OutputMetrics.h"
#include "Plugins/SparkplugMqtt/PasswordCommand.h"
#include "Plugins/SparkplugMqtt/SampleQueue.h"
#include "Plugins/SparkplugMqtt/SparkplugMetrics.h"
#include "Plugins/SparkplugMqtt/SparkplugOutputMap.h"
#include "Plugins/SparkplugMqtt/SparkplugParams.h"
#include "Plugins/SparkplugMqtt/Waker.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "wApi/wMutex.h"

#include <nlohmann/json_fwd.hpp>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SparkplugMqtt
{

/// Publishes results and state of the sensor as a Sparkplug edge node with one device, and carries out the commands of
/// host applications.
///
/// Threads: the threads of the REST service and of the host call the public operations. The dispatcher's thread encodes
/// results into the queue and never waits for the network. The network thread of the EdgeNode publishes them. The thread
/// "Sparkplug.State" fetches the state. Ends of operations arrive on "CtlProtoOp.Disp".
class SparkplugMqttProtocol final : public ZuControl::ControlProtocol::ProtocolBase
{
public:
    static constexpr ZuControl::ZuEthernetProtocol PROTOCOL_ID{3};
    static constexpr char const* TYPE_NAME = "SparkplugMqtt";
    static constexpr char const* DISPLAY_NAME = "Sparkplug MQTT";

    /// Throws `Zu::Status::BAD_ARGUMENT` for an `environ` without a data cache or a problems manager, and as the base
    /// class does.
    explicit SparkplugMqttProtocol(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ);
    ~SparkplugMqttProtocol() override;

    /// Does nothing if the service runs. Throws `Zu::Status::BAD_ARGUMENT` for parameters that are not allowed. A server
    /// that cannot be reached is no error: the node tries again until `Stop`.
    void Start() override;
    void Stop() override;

    /// A running node publishes its deaths and begins anew with the new parameters. If they are not allowed, they are
    /// restored to the last accepted ones and the node goes on.
    void ParamsUpdate() override;
    void ResetParams() override;

    Zu::Properties::Structure& UpdateMetrics() override;
    void ResetMetrics() override;
    void OnStartScan() override;
    void OutputsUpdate() override;
    void ProcessResultSets(void* resultSets) override;
    void RegisterControlScanResultsHandler(ZuControl::IControlScanResults& results) override;
    void DeregisterControlScanResultsHandler(ZuControl::IControlScanResults& results) override;
    ZuControl::IControlActionTarget* ActionTarget() override;

    /// Adds the stamp, which has the time of the scan, to the sources of the outputs.
    std::vector<std::string> DataSourceList() const override;

    /// Forgets the password.
    void OnFactoryRestore() override;

    // The domain PROTOCOL has the password and the number of the last connection.
    void InitPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) override;
    void LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document) override;
    void SavePersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) override;

private:
    static constexpr char const* STAMP_SOURCE = "profile/stamp";

    /// The settings of the domain PROTOCOL, which no job replaces.
    struct Kept
    {
        std::string password;
        std::optional<uint8> bdSeq; ///< of the last connection, or of the one that begins next
    };

    /// How many times the host has asked for the settings since `bdSeq` changed. It writes them before it asks again, so
    /// with the second time the first answer is in the file.
    struct Saves
    {
        uint32 asked = 0;
        bool isSecondWanted = false; ///< the host was told to ask again
    };

    void StartNode(EdgeNode::Settings const& settings) ZU_REQUIRES(lifecycleLock);
    void StopNode() ZU_REQUIRES(lifecycleLock);
    void KeepAccepted() ZU_REQUIRES(lifecycleLock);
    void RunCommand(CommandRunner::Command const& command);
    void KeepPassword(std::string const& password);
    void KeepBdSeq(uint8 bdSeq);
    bool IsBdSeqKept();
    std::string Password() const;
    void SetServing(bool newIsServing);
    void TellClientCount();

    SparkplugParams params;
    SparkplugCounters counters;
    SparkplugMetrics metrics{counters};
    SparkplugOutputMap outputMap;
    SparkplugOutputActions outputActions;
    PasswordCommand passwordCommand;
    Waker waker;
    SampleQueue queue;
    OutputMetrics outputMetrics;
    PluginCommon::StateFetcher fetcher;
    CommandRunner commands;
    ZuControl::IControlResourceAdaptor* const resources;
    ZuCommon::ProblemsManager& problems;

    // Lock order: this, then `fanOutLock`. Starts, stops and changes of the parameters exclude each other. It is held
    // while the network thread is joined, so that thread never takes it.
    Zu::Mutex lifecycleLock;
    std::unique_ptr<nlohmann::json> accepted ZU_GUARDED_BY(lifecycleLock); // the parameters to restore

    Zu::Mutex metricsLock; // held during an update of the metrics; problems of the base class are reported under it

    // Held while the client count is reported to the fan-out, so that counts arrive in order. The dispatcher's thread
    // must not take it: the fan-out may join that thread under its own lock.
    Zu::Mutex fanOutLock;
    ZuControl::IControlScanResults* fanOut ZU_GUARDED_BY(fanOutLock) = nullptr; // set while registered for results
    bool isServing ZU_GUARDED_BY(fanOutLock) = false;                           // from start to stop

    mutable Zu::Mutex keptLock; // a leaf
    Kept kept ZU_GUARDED_BY(keptLock);
    Saves saves ZU_GUARDED_BY(keptLock);

    std::unique_ptr<EdgeNode> node ZU_GUARDED_BY(lifecycleLock); // null while stopped; last: its thread uses the rest
};

} // namespace SparkplugMqtt
