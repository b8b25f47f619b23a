#pragma once

#include "Host/Operation/SensorCommands.h"
#include "ZuApi/Signal.h"
#include "ZuRest/DocumentResourceBase.h"
#include "ZuRest/IContentResource.h"
#include "ZuRest/IUpdatableResource.h"

#include <nlohmann/json.hpp>

namespace ZuCommon
{
class PersistManager;
}

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuHost
{

class SensorModule;
class SensorSettings;

/// "/sensor": the state of the sensor.
class SensorResource final : public ZuRest::DocumentResourceBase
{
public:
    /// All arguments outlive this.
    SensorResource(SensorModule& usedModule, ZuCommon::PersistManager& usedJobs, SensorCommands& usedCommands);
    ~SensorResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    nlohmann::json Alignment(std::string const& scanner) const;
    nlohmann::json Results(uint64 droppedSets) const;
    nlohmann::json OperationInFlight() const;

    SensorModule& module;
    ZuCommon::PersistManager& jobs;
    SensorCommands& commands;
};

/// "/sensor/commands/:command": the commands, of which POST runs one.
class SensorCommandResource final : public ZuRest::DocumentResourceBase, public ZuRest::IContentResource
{
public:
    /// The commands outlive this.
    explicit SensorCommandResource(SensorCommands& usedCommands);
    ~SensorCommandResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;
    std::vector<std::string> ContentMethods() const override;
    ZuRest::Answer AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& info) override;

private:
    SensorCommands& commands;
};

/// "/operations/:number": the last operations.
class OperationsResource final : public ZuRest::DocumentResourceBase
{
public:
    /// The log outlives this.
    explicit OperationsResource(OperationLog const& shownLog);
    ~OperationsResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    static std::string PathOf(uint64 number);
    static nlohmann::json DocumentOf(OperationLog::Operation const& operation);

private:
    OperationLog const& log;
};

/// "/sensor/authority": whether REST clients may run the sensor.
class SensorAuthorityResource final : public ZuRest::DocumentResourceBase, public ZuRest::IUpdatableResource
{
public:
    /// Both arguments outlive this.
    SensorAuthorityResource(SensorSettings& usedSettings, ControlAuthority const& shownAuthority);
    ~SensorAuthorityResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;
    void UpdateDocument(ZuRest::RequestInfo const& request, nlohmann::json const& document) override;
    bool IsUpdatable() const noexcept override;

private:
    SensorSettings& settings;
    ControlAuthority const& authority;
};

/// "/sensor/limits": the limits of the measurements.
class SensorLimitsResource final : public ZuRest::DocumentResourceBase, public ZuRest::IUpdatableResource
{
public:
    /// The settings outlive this.
    explicit SensorLimitsResource(SensorSettings& usedSettings);
    ~SensorLimitsResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;
    void UpdateDocument(ZuRest::RequestInfo const& request, nlohmann::json const& document) override;
    bool IsUpdatable() const noexcept override;

private:
    SensorSettings& settings;
};

/// Registers the resources that run the sensor. Notifies clients of the begin and the end of each operation.
class SensorResources final
{
public:
    struct Parts
    {
        SensorModule& module; ///< it is built
        ZuCommon::PersistManager& jobs;
        SensorCommands& commands;
        SensorSettings& settings;
        ControlAuthority const& authority;
    };

    /// All parts outlive this.
    explicit SensorResources(Parts const& parts);
    ~SensorResources(); ///< removes its routes

    SensorResources(SensorResources const&) = delete;
    SensorResources& operator=(SensorResources const&) = delete;

private:
    ZuRest::ResourceRouter& router;
    SensorResource sensor;
    SensorCommandResource command;
    OperationsResource operations;
    SensorAuthorityResource authority;
    SensorLimitsResource limits;

    Zu::Subscription changes; // last: its end waits for a call
};

} // namespace ZuHost
