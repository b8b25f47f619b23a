#pragma once

#include "Host/CommandLine/Options.h"
#include "Host/Module/PersistRegistry.h"
#include "Host/Module/SensorModule.h"
#include "Host/Module/UpdateGate.h"
#include "ZuCommon/Persistence.h"
#include "ZuCommon/Problems.h"
#include "ZuPlugin/PluginManager.h"
#include "wApi/wTypes.h"

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

/// A plug-in library in the environment of a sensor, so that each step of its life can be tried.
///
/// Nothing here protects the process from the library: use it in a child process. Call the operations in the order of
/// their declaration, on one thread. Exceptions of the library reach the caller.
class PluginTrial final
{
public:
    /// The library is loaded from `newLoadPath`, and called `pluginFile` in texts.
    PluginTrial(std::filesystem::path pluginFile, std::filesystem::path newLoadPath, Deployment kind);
    ~PluginTrial();

    PluginTrial(PluginTrial const&) = delete;
    PluginTrial& operator=(PluginTrial const&) = delete;

    /// Throws `Zu::Status::BAD_FORMAT` with the reason for a file that the loader refuses.
    void Load();

    /// Builds the module with the protocols of the library, as a sensor does at its start.
    void Create();

    /// Destroys the protocols and makes them again, this time with factories that note them for `Feed` and `Destroy`.
    void CreateAnew();

    /// For each protocol: makes a new job, sets a free port if "port" may be 0, and enables it. Throws
    /// `Zu::Status::NOT_OFFERED` for a library without a protocol for this kind of system, and
    /// `Zu::Status::WRONG_STATE` for a protocol that neither runs nor is starting.
    void Start();

    /// Hands result sets of the simulated part to each protocol.
    void Feed();

    void Stop();

    /// Destroys the module. Throws `Zu::Status::WRONG_STATE` if a protocol is still alive afterwards.
    void Destroy();

    /// A protocol type that the library offers for this kind of system, and its number.
    struct ProtocolType
    {
        std::string name;
        int32 number;
    };

    /// In the order of the names. Call it while the protocols exist.
    std::vector<ProtocolType> Types();

    /// Throws `Zu::Status::BAD_ARGUMENT` unless the name of each type consists of letters and digits: names are parts of
    /// paths, of options and of metrics.
    void CheckNames();

    /// Describes for a person what the library offers. Call it while the protocols exist.
    std::string Offer();

private:
    class MeetingFactory;
    class MeetingPlugin;

    std::string OfferOf(ZuControl::IControlInstance& instance);

    std::filesystem::path const file;
    std::filesystem::path const loadPath;

    // The order is that of construction: an object outlives the objects below, which use it.
    std::vector<std::weak_ptr<ZuControl::ControlProtocol::IProtocol>> met; // in the order of their construction
    ZuCommon::ProblemsManager problems;
    PersistRegistry persistRegistry;
    UpdateGate updateGate;
    ZuCommon::PersistManager persistManager;
    ZuPlugin::PluginManager loaded;
    ZuPlugin::PluginManager meeting; ///< the same types, with factories that note the protocols
    SensorModule sensorModule;
};

} // namespace ZuHost
