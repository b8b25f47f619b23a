#pragma once

#include "Host/Module/UpdateGate.h"
#include "Host/Store/Archive.h"
#include "ZuCommon/Persistence.h"

#include <map>
#include <string>
#include <vector>

namespace ZuHost
{

class PersistRegistry;
class StartRetry;

/// Holds the gate during one load or save, so that no other thread changes the configuration. The destructor also
/// closes brackets that a failed handler left open. Do not nest it.
class GateBracket final
{
public:
    explicit GateBracket(UpdateGate& usedGate) : gate(usedGate), request(usedGate)
    {
        gate.BeginUpdate(true);
    }

    ~GateBracket()
    {
        gate.EndUpdate();
    }

    GateBracket(GateBracket const&) = delete;
    GateBracket& operator=(GateBracket const&) = delete;

private:
    UpdateGate& gate;
    UpdateGate::Request const request;
};

/// The documents that the registered handlers give to a save of one domain.
struct SavedDocuments
{
    /// Services by type name, see `StartRetry::Wanted`.
    using Wanted = std::map<std::string, std::string>;

    ArchiveContents::Files files;
    std::vector<std::string> faults; ///< a sentence for each service without a document

    /// Collects the documents. Those of the services in `wanted` say that they are enabled. In a job each service must
    /// have a document. The caller holds the gate.
    static SavedDocuments Collect(PersistRegistry& registry, ZuCommon::PersistDomain domain, Wanted const& wanted);

    /// The services that are saved as enabled although they do not run: those that are being retried, and `heldBack`.
    static Wanted ToRun(StartRetry const& startRetry, std::vector<std::string> const& heldBack);
};

} // namespace ZuHost
