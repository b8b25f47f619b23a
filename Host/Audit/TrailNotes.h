#pragma once

#include "Host/Audit/ITrail.h"
#include "ZuRest/ResourceRequestProcessor.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ZuControl
{
struct ControlOperationEnd;
struct ControlRefusal;
} // namespace ZuControl

/// Makes entries of the trail.
namespace ZuHost::TrailNotes
{

/// A change over REST: the members that differ, or the body of a request that is no update. Nothing for a request to a
/// resource that writes entries of its own.
std::optional<TrailEntry> OfChange(ZuRest::ResourceRequestProcessor::Change const& change);

/// The end of a PLC's command; nothing for a trigger, and nothing for an operation of the host, which notes its own.
std::optional<TrailEntry> OfOperation(ZuControl::ControlOperationEnd const& end);

/// A client that a service for PLCs does not admit, or a request that the client's role does not allow.
TrailEntry OfRefusal(ZuControl::ControlRefusal const& refusal);

/// The start of the host with its command line.
TrailEntry OfStart(std::vector<std::string> const& words);

/// A plug-in library that was loaded, with its size and SHA-256. `loadPath` is the file that the loader has read.
TrailEntry OfPlugin(std::filesystem::path const& file, std::filesystem::path const& loadPath);

/// A plug-in that was refused.
TrailEntry OfRefusedPlugin(std::filesystem::path const& file, std::string const& reason);

/// Notes the start of the host, and its stop at the end of this object.
class Run final
{
public:
    /// The trail outlives this.
    Run(ITrail& usedTrail, std::vector<std::string> const& words);
    ~Run(); ///< notes a stop that has failed unless `Stopped` was called

    Run(Run const&) = delete;
    Run& operator=(Run const&) = delete;

    /// Notes an orderly stop.
    void Stopped();

private:
    ITrail& trail;
    bool hasStopped = false;
};

} // namespace ZuHost::TrailNotes
