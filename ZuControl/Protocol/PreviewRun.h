#pragma once

#include "ZuControl/ControlProtocol/EntryRefusal.h"
#include "ZuControl/ControlProtocol/Layout.h"
#include "ZuControl/ControlProtocol/LayoutCopy.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

namespace ZuControl
{

class IControlInstance;
class IPreviewedActions;

namespace Protocol
{

/// One command of a preview with its arguments.
struct PreviewStep
{
    std::string command;
    std::shared_ptr<nlohmann::json const> arguments;
};

/// The commands in the body of a preview: one, or a list of at most `MOST_STEPS`. Throws `Zu::Status::BAD_ARGUMENT` for
/// another body.
inline constexpr std::size_t MOST_STEPS = 100;
ZUCONTROL_INTERNAL_API std::vector<PreviewStep> StepsOf(nlohmann::json const& body);

/// The layouts of a service: its assemblies in the order of their ids, then its output map. Throws
/// `Zu::Status::NOT_SUPPORTED` for a map that is of another class than those of this library, and where there is
/// neither. Waits for the locks of the assemblies and of the map. `omitted` names an assembly, or stands for the output
/// map: it is not read, and stands in the list in place of its layout.
ZUCONTROL_INTERNAL_API std::vector<ControlProtocol::Layout> LayoutsOf(IControlInstance& instance,
                                                                      ControlProtocol::Layout const* omitted = nullptr);

/// Runs commands on a copy of an assembly or of a map and describes what they would do.
///
/// Threads: one thread at a time. After the construction it touches nothing but the copy.
class ZUCONTROL_INTERNAL_API PreviewRun final
{
public:
    /// How the resource of the commands answers.
    struct Manners
    {
        std::string commandsPath;                 ///< of the resource, without the last segment
        void (*rethrow)() = nullptr;              ///< in a catch block: throws what a client gets for a refused command
        IPreviewedActions const* check = nullptr; ///< null: the target has no check of its own
        bool hidesAddAll = false;                 ///< a failed "addAll" is no refusal
    };

    /// `newServiceLayouts` is empty where the service has no fingerprint; otherwise one of its layouts has the kind and
    /// the id of the copy, which replaces it.
    PreviewRun(std::unique_ptr<ControlProtocol::LayoutCopy> newCopy, Manners newManners,
               std::vector<ControlProtocol::Layout> newServiceLayouts);
    ~PreviewRun();

    PreviewRun(PreviewRun const&) = delete;
    PreviewRun& operator=(PreviewRun const&) = delete;

    /// The answer as JSON text. The first refused command ends the run.
    std::string Answer(std::vector<PreviewStep> const& steps, std::string const& tag);

private:
    /// A command that was run.
    struct Result
    {
        std::string command;
        std::vector<ControlProtocol::EntryRefusal> refusedEntries;
        std::optional<std::string> problem; ///< the document that a client gets, as text
    };

    Result Run(PreviewStep const& step);
    void Invoke(std::string const& command, Zu::Params::Group const& params);
    std::optional<uint32> FingerprintWith(ControlProtocol::Layout after);

    std::unique_ptr<ControlProtocol::LayoutCopy> const copy;
    Manners const manners;
    std::vector<ControlProtocol::Layout> serviceLayouts;
};

} // namespace Protocol

} // namespace ZuControl
