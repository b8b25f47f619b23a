#pragma once

#include "Support/CallLog.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/ControlProtocol/IProtocolOutput.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"

#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace ZuControl
{

/// Records calls, and runs the functions that a test has set for them.
class Hooks
{
public:
    void Note(std::string const& call)
    {
        calls.Add(call);
        if (auto const position = on.find(call); position != on.end())
        {
            position->second();
        }
    }

    ZuTest::CallLog calls;
    std::map<std::string, std::function<void()>> on;
};

enum class MapKind
{
    NONE,
    REGISTER,
    STANDARD,
    TEXT_ID
};

/// The parts of a protocol of a test.
struct ProtocolParts
{
    int32 number = 100;
    MapKind map = MapKind::NONE;
    bool hasOutputsTarget = true;
    bool hasActionArguments = true; ///< of the map and of the assemblies
    unsigned assemblies = 0; ///< "r0", "r1" and so on; those with even numbers have the global address space 0 to 999
};

/// The parameters of a protocol of a test.
struct ConfigurableParams final : public Zu::Params::Group
{
    ConfigurableParams();
    ~ConfigurableParams() override;

    void SetDefaults();

    struct Limits final : public Zu::Params::Group
    {
        Limits();
        ~Limits() override;

        Zu::Params::Value<int32> low;
        Zu::Params::Value<double> high;
    };

    Zu::Params::Value<uint16> port;
    Zu::Params::Value<std::string> name;
    Zu::Params::Value<bool> secure;
    Zu::Params::Value<uint64> mask;
    Limits limits;
};

/// A protocol with real parameters, a real output map and real register assemblies.
///
/// Its calls are recorded in `hooks` by the name of the operation. Calls to the map have the prefix "Map.", calls to an
/// assembly the prefix of its id and a dot.
/// The block types of an assembly are "Plain" (2 registers), "Scan" (3 registers, with a data source) and "Single" (1
/// register; at least one, at most one).
class ConfigurableProtocol final : public ControlProtocol::ProtocolBase
{
public:
    ConfigurableProtocol(ControlProtocol::ControlProtocolEnviron const& environ, Hooks& sharedHooks,
                         ProtocolParts const& parts);
    ~ConfigurableProtocol() override;

    Zu::Params::Group& Params() const override;
    Zu::Properties::Structure& UpdateMetrics() override;
    void ResetMetrics() override;
    void ParamsUpdate() override;
    void ResetParams() override;
    void Start() override;
    void Stop() override;
    void OutputsUpdate() override;
    void RegisterAssemblyUpdate(char const* id) override;
    void ConfigureDefaultRegisterAssembly() override;
    void InitPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) override;
    void LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document) override;
    void SavePersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) override;

    ConfigurableParams params;
    std::unique_ptr<ControlProtocol::IProtocolOutput> map;
    std::vector<std::unique_ptr<ControlProtocol::ProtocolRegisterAssemblyBase>> assemblies;
    nlohmann::json ownDocument; ///< of the protocol's own domain

private:
    void MakeMap(ProtocolParts const& parts);
    void MakeAssemblies(ProtocolParts const& parts);

    Hooks& hooks;
    Zu::Properties::Structure metrics{true};
    std::unique_ptr<ControlProtocol::ProtocolOutputActionTarget> mapTarget;
    std::vector<std::unique_ptr<ControlProtocol::ProtocolRegisterAssemblyActionTarget>> assemblyTargets;
    ControlProtocol::ProtocolRegisterAssemblyGroup assemblyGroup;
};

} // namespace ZuControl
