#pragma once

#include "ZuRest/Answer.h"
#include "ZuRest/DocumentReader.h"
#include "ZuRest/OpenStream.h"
#include "ZuRest/Request.h"
#include "ZuRest/RequestProcessor.h"
#include "ZuRest/ResourceLocks.h"
#include "ZuRest/ResourceRouter.h"
#include "wApi/wMutex.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ZuRest
{

class IStreamReceiver;

/// Turns requests into answers: the one place that knows both the resources and how they look on the wire.
///
/// It has no thread and no socket. Any thread may call, several at once. Who may run beside whom: ResourceLocks; each
/// change of a document keeps the place's document from before it for those who read meanwhile.
class ZUPLATFORM_API ResourceRequestProcessor final : public RequestProcessor
{
public:
    /// The answer, and for a stream that has begun, the stream, which ends with its object.
    struct Outcome
    {
        Answer answer;
        std::unique_ptr<OpenStream> stream;
    };

    /// Runs a piece of work, now or later, on any thread.
    using Runner = std::function<void(std::function<void()>)>;

    /// Makes the receiver of a stream that is about to begin. It outlives the stream. `isState` tells that each report stands
    /// for all before it, so that a slow reader needs the newest alone.
    using ReceiverMaker = std::function<IStreamReceiver&(bool isState)>;

    /// Makes what is to live while a request is carried out, on the thread that does it.
    using ScopeMaker = std::function<std::shared_ptr<void>()>;

    /// Carries out the update of the document at `path` with `body`: calls `update`, which throws what refuses it.
    using UpdateRunner =
        std::function<void(std::string const& path, nlohmann::json const& body, std::function<void()> const& update)>;

    /// `relationTemplate` as for DocumentReader. The router outlives this.
    explicit ResourceRequestProcessor(ResourceRouter const& usedRouter, std::string const& relationTemplate = {},
                                      ScopeMaker newMakeScope = {});
    ~ResourceRequestProcessor() override;

    ResourceRequestProcessor(ResourceRequestProcessor const&) = delete;
    ResourceRequestProcessor& operator=(ResourceRequestProcessor const&) = delete;

    /// Every update goes through `runner` from now on, while its place is locked for the change. To be set before requests
    /// come; empty: none.
    void SetUpdateRunner(UpdateRunner runner);

    /// A read from inside the process: it waits for no request that waits itself, so that a protocol gets its answer while
    /// it is being started, also of what its own start is a change of.
    nlohmann::json Read(std::string const& path, nlohmann::json const& request, std::string const& query) override;

    /// Waits for its turn and gives the answer; throws nothing that a resource throws.
    Outcome Process(Request const& request, ReceiverMaker const& makeReceiver = {});

    /// The answer to a read that waits for nobody (IPromptResource), at once and beside whatever runs; nothing for any other
    /// request.
    std::optional<Outcome> ProcessPrompt(Request const& request) const;

    /// Has it carried out by `run` when its turn has come, without holding up a thread until then; `done` gets what came of
    /// it, on the thread that carried it out. This and `run` stand until then.
    void ProcessLater(Request request, ReceiverMaker makeReceiver, Runner const& run,
                      std::function<void(Outcome)> done);

    /// Runs `work` on this thread while nothing of one tree is read or changed by requests: it waits for those that run, and
    /// who comes later waits for it. `heads` are the heads of the tree's places, that of the tree first: reads from inside
    /// find their documents as they were before. `work` may read the tree through this. What it throws goes on.
    void RunAlone(std::vector<std::string> const& heads, std::function<void()> const& work);

    /// Runs `work` on this thread as a change of the place of `path`: it waits for its turn, and nothing of the place is read
    /// or changed by requests meanwhile. Reads from inside find the document as it was before. What it throws goes on.
    void RunAsChange(std::string const& path, std::function<void()> const& work);

private:
    std::shared_ptr<ResourceLocks::Pass> WaitForTurn(Place const& place, ResourceLocks::Mode mode);
    Outcome Carry(Request const& request, ReceiverMaker const& makeReceiver, ResourceLocks::Pass& pass);
    Outcome Dispatch(Request const& request, ReceiverMaker const& makeReceiver, ResourceLocks::Pass& pass);
    Outcome Get(Request const& request, ResourceRouter::Match match, ReceiverMaker const& makeReceiver);
    Outcome Stream(Request const& request, ResourceRouter::Match match, ReceiverMaker const& makeReceiver);
    Answer Change(Request const& request, ResourceRouter::Match const& match, ResourceLocks::Pass& pass);
    Answer Update(Request const& request, ResourceRouter::Match const& match, ResourceLocks::Pass& pass);
    Answer Call(Request const& request, ResourceRouter::Match const& match);
    Answer ShowDocument(Request const& request, ResourceRouter::Match const& match) const;
    bool IsPreconditionMet(Request const& request) const;
    void KeepBefore(Place const& place, ResourceLocks::Pass& pass) const;

    ResourceRouter const& router;
    ResourceLocks locks;
    DocumentReader const reader;
    ScopeMaker const makeScope;
    UpdateRunner runUpdate;
    std::shared_ptr<Zu::Mutex> const streamLock;
};

} // namespace ZuRest
