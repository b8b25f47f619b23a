#pragma once

#include "Host/Http/IGatekeeper.h"
#include "Host/Security/RefusalGatherer.h"
#include "Host/Security/RouteTable.h"

#include <atomic>
#include <functional>
#include <string>
#include <vector>

namespace ZuHost
{

class ICallerSource;
class ITrail;
struct KnownCaller;
struct Proof;

/// Finds out who sends a request and whether the caller's role suffices for it.
///
/// The service is open, and every caller an administrator, while only this machine reaches it and no source has
/// callers. Otherwise each request needs a caller, except those that the route table leaves open to everybody.
class Gatekeeper final : public IGatekeeper
{
public:
    /// The caller of every request while the service is open.
    static constexpr char const* LOCAL_CALLER = "local";

    /// Requests that are open to everybody have bodies of at most so many bytes: a login.
    static constexpr uint64 MAX_OPEN_BODY_BYTES = 4 * 1024;

    /// Returns the methods of the resource at a percent-encoded path, as `ResourceRequestProcessor::MethodsAt`.
    using MethodFinder = std::function<std::string(std::string const& path)>;

    /// The sources are asked in this order. They, the trail and the objects that `newFindMethods` uses outlive this.
    Gatekeeper(std::vector<ICallerSource*> newSources, ITrail& usedTrail, MethodFinder newFindMethods);
    ~Gatekeeper() override;

    Gatekeeper(Gatekeeper const&) = delete;
    Gatekeeper& operator=(Gatekeeper const&) = delete;

    /// Whether other machines reach the service. True until the first call. Any thread may call.
    void SetBeyondLoopback(bool isBeyond) noexcept;

    /// Sets the text that a caller who is not logged in sees in each answer 401; empty: none. Set it before the first
    /// request.
    void SetLoginNotice(std::string text);

    /// Whether any source may have callers. Any thread may call.
    bool HasCallers() const noexcept;

    Admission Admit(Credentials const& credentials) override;
    bool IsCurrent(ZuRest::Caller const& caller) const noexcept override;

    /// The owner fires it.
    Zu::Signal<>& EndedSignal() noexcept override;

private:
    bool IsOpen() const noexcept;
    Proof Identify(Credentials const& credentials) const;
    Admission AskForLogin() const;
    Admission Judge(Credentials const& credentials, Proof const& proof) const;
    Admission JudgeWithoutRoute(Credentials const& credentials, KnownCaller const& caller) const;
    void NoteRefusal(Credentials const& credentials, Proof const& proof, uint32 status);

    std::vector<ICallerSource*> const sources;
    RefusalGatherer notes;
    MethodFinder const findMethods;
    std::string loginNotice;
    Zu::Signal<> endedSignal;
    std::atomic<bool> isBeyondLoopback = true; // publishes nothing else
};

} // namespace ZuHost
