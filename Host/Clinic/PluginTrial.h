#pragma once

#include "Host/CommandLine/Options.h"
#include "Host/Module/PersistRegistry.h"
#include "Host/Module/SensorModule.h"
#include "Host/Module/UpdateGate.h"
#include "ZuCommon/PersistManager.h"
#include "ZuCommon/ProblemsManager.h"
#include "ZuPlugin/PluginManager.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace ZuControl
{
class IControlInstance;
class IControlManager;

namespace ControlProtocol
{
class IProtocol;
}
} // namespace ZuControl

namespace ZuHost
{

/// One plug-in library and around it all that a sensor gives to a protocol, so that each station of its life can be tried.
///
/// Nothing here protects the process from the library: it is meant for a process that may end with it. The operations are
/// called in their order, on one thread; what the library throws goes on.
class PluginTrial final
{
public:
    PluginTrial(std::filesystem::path pluginFile, Deployment kind);
    ~PluginTrial();

    PluginTrial(PluginTrial const&) = delete;
    PluginTrial& operator=(PluginTrial const&) = delete;

    /// Throws -984 with the reason for a file that the loader refuses.
    void Load();

    /// Builds the module with what the library offers, as a sensor does when it starts.
    void Create();

    /// Lets the protocols go and makes them anew, so that this object gets to know them.
    void CreateAnew();

    /// Gives every protocol a new job, a free port if it takes the "port" 0, and enables it. Throws -998 for a
    /// library without a protocol for this kind of system, and -1000 for a protocol that neither runs nor is about to.
    void Start();

    /// Hands result sets of the simulated part to every protocol.
    void Feed();

    void Stop();
    void Destroy();

    /// What the library offers, in lines for the person who asked; while the protocols are there.
    std::string Offer();

private:
    class MeetingFactory;
    class MeetingPlugin;

    std::string OfferOf(ZuControl::IControlInstance& instance);

    std::filesystem::path const file;

    // The order is that of their life: what the module is given outlives it.
    std::vector<std::weak_ptr<ZuControl::ControlProtocol::IProtocol>> met; // in the order in which they were made
    ZuCommon::ProblemsManager problems;
    PersistRegistry persistRegistry;
    UpdateGate updateGate;
    ZuCommon::PersistManager persistManager;
    ZuPlugin::PluginManager loaded;
    ZuPlugin::PluginManager meeting; ///< the same types, by way of factories that note what they make
    SensorModule sensorModule;
};

} // namespace ZuHost
