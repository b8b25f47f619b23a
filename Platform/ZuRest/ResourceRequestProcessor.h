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

/// Processes requests. It is the only class that knows both the resources and their form on the network.
///
/// It has no thread and no socket. Any thread may call; several threads may call at the same time. `ResourceLocks`
/// decides which requests run at the same time. During a change of a place, reads from inside and documents of other
/// places that embed its document show it as it was before the change.
class ZUPLATFORM_API ResourceRequestProcessor final : public RequestProcessor
{
public:
    /// The answer and, if the request opened a stream, the stream. Destroying the stream object stops the stream.
    struct Outcome
    {
        Answer answer;
        std::unique_ptr<OpenStream> stream;
    };

    /// Runs a function, now or later, on any thread.
    using Runner = std::function<void(std::function<void()>)>;

    /// Makes the receiver of a new stream; it must outlive the stream. `isState` is true if each report replaces all
    /// earlier ones, so that a slow reader needs only the newest.
    using ReceiverMaker = std::function<IStreamReceiver&(bool isState)>;

    /// Makes an object that lives while a request is processed, on the thread that processes it.
    using ScopeMaker = std::function<std::shared_ptr<void>()>;

    /// Performs the update of the document at `path` with `body` by calling `update`, which throws if the resource
    /// refuses.
    using UpdateRunner =
        std::function<void(std::string const& path, nlohmann::json const& body, std::function<void()> const& update)>;

    /// A request that was to change something, and its answer. The objects live during the call only.
    struct Change
    {
        Request const& request;
        Answer const& answer;
        std::string const& before; ///< the document before an update; empty for all other requests
    };

    using ChangeObserver = std::function<void(Change const&)>;

    /// `relationTemplate` is as for `DocumentReader`, `independent` as for `ResourceLocks`. The router must outlive this
    /// object.
    explicit ResourceRequestProcessor(ResourceRouter const& usedRouter, std::string const& relationTemplate = {},
                                      ScopeMaker newMakeScope = {}, std::vector<Place> const& independent = {});
    ~ResourceRequestProcessor() override;

    ResourceRequestProcessor(ResourceRequestProcessor const&) = delete;
    ResourceRequestProcessor& operator=(ResourceRequestProcessor const&) = delete;

    /// Sets a function that performs every update, while the place is locked for the change. Set it before the first
    /// request. An empty function means that updates run directly.
    void SetUpdateRunner(UpdateRunner runner);

    /// Sets a function that is called after each request with PUT, PATCH, POST or DELETE, also after one that was
    /// refused, on the thread that processed it, while its place is still locked. It must not wait. Set it before the
    /// first request.
    void SetChangeObserver(ChangeObserver observer);

    /// Reads from inside the process. It passes waiting requests, so that a protocol gets its answer while it starts,
    /// even if its own start is a change of the place that it reads.
    nlohmann::json Read(std::string const& path, nlohmann::json const& request, std::string const& query) override;

    /// Waits for the request's turn and returns the answer. An exception of a resource becomes an answer.
    Outcome Process(Request const& request, ReceiverMaker const& makeReceiver = {});

    /// Answers a read of an `IPromptResource` at once, concurrently with all other requests. Returns nothing for any
    /// other request.
    std::optional<Outcome> ProcessPrompt(Request const& request) const;

    /// Processes the request with `run` when its turn has come, without blocking a thread until then. `done` gets the
    /// outcome on the thread that processed the request. This object must live until then.
    void ProcessLater(Request request, ReceiverMaker makeReceiver, Runner const& run,
                      std::function<void(Outcome)> done);

    /// Returns the methods of the resource at a percent-encoded path, as the header Allow shows them: "GET, HEAD,
    /// OPTIONS". Empty if there is no resource. Never waits for a request.
    std::string MethodsAt(std::string const& path) const;

    /// Runs `work` on the calling thread as the only activity in a tree: waits for the running requests of the tree and
    /// delays later ones. `heads` are the heads of the tree's places, the head of the tree first. Reads from inside see
    /// their documents from before `work`. `work` may read the tree through this object. An exception of `work` goes to
    /// the caller.
    void RunAlone(std::vector<std::string> const& heads, std::function<void()> const& work);

    /// Runs `work` on the calling thread as a change of the place of `path`: waits for its turn, then delays the
    /// requests of the place. Reads from inside see the document from before `work`. An exception of `work` goes to the
    /// caller.
    void RunAsChange(std::string const& path, std::function<void()> const& work);

private:
    /// What one request needs on its way to the resource.
    struct Turn
    {
        std::shared_ptr<ResourceLocks::Pass>& pass; // a preview releases it early
        std::string before;                         // as in `Change`
    };

    std::shared_ptr<ResourceLocks::Pass> WaitForTurn(Place const& place, ResourceLocks::Mode mode);
    ResourceLocks::Mode ModeOf(Request const& request) const;
    Outcome Carry(Request const& request, ReceiverMaker const& makeReceiver,
                  std::shared_ptr<ResourceLocks::Pass>& pass);
    Outcome Dispatch(Request const& request, ReceiverMaker const& makeReceiver, Turn& turn);
    Outcome DispatchTo(Request const& request, ResourceRouter::Match match, ReceiverMaker const& makeReceiver,
                       Turn& turn);
    Outcome Get(Request const& request, ResourceRouter::Match match, ReceiverMaker const& makeReceiver);
    Outcome Stream(Request const& request, ResourceRouter::Match match, ReceiverMaker const& makeReceiver);
    Answer CarryOutChange(Request const& request, ResourceRouter::Match const& match, Turn& turn);
    Answer Update(Request const& request, ResourceRouter::Match const& match, Turn& turn);
    std::string StrictFault(Request const& request, ResourceRouter::Match const& match,
                            nlohmann::json const& body) const;
    Answer Call(Request const& request, ResourceRouter::Match const& match);
    Answer Preview(Request const& request, ResourceRouter::Match const& match, Turn& turn);
    Answer ShowDocument(Request const& request, ResourceRouter::Match const& match) const;
    bool IsPreconditionMet(Request const& request, std::string const& subjectPath) const;
    void KeepBefore(Place const& place, ResourceLocks::Pass& pass) const;

    ResourceRouter const& router;
    ResourceLocks locks;
    DocumentReader const reader;
    ScopeMaker const makeScope;
    UpdateRunner runUpdate;
    ChangeObserver observeChange;
    std::shared_ptr<Zu::Mutex> const streamLock;
};

} // namespace ZuRest
