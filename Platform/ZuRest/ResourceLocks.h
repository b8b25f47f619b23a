#pragma once

#include "ZuRest/Place.h"
#include "wApi/wTypes.h"

#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <vector>

namespace ZuRest
{

/// Decides which requests of the resource tree may run at the same time.
///
/// Reads of one place run concurrently. A change runs alone in its place, and only one change of a tree runs at a time.
/// A change of an independent place runs beside the other changes of its tree, except for a `CHANGE_TREE`.
/// A request that must wait does not block a thread: its callback is called when its turn comes, in the order of
/// arrival. A long `CHANGE` delays only requests of the same place and other changes of the same tree. Any thread may
/// call.
class ZUPLATFORM_API ResourceLocks
{
public:
    enum class Mode
    {
        READ,
        CHANGE,
        CHANGE_TREE ///< a change of all places of the tree, alone in the tree
    };

    /// The right to run, held for the lifetime of the object.
    class ZUPLATFORM_API Pass
    {
    public:
        virtual ~Pass();

        /// Sets the document at the head of the place from before this change. Reads through `EnterInner` show it
        /// during the change.
        virtual void ShowBefore(std::shared_ptr<nlohmann::json const> document) = 0;

        /// As `ShowBefore`, for another place that this change covers.
        virtual void ShowBeforeAt(Place const& place, std::shared_ptr<nlohmann::json const> document) = 0;
    };

    using Admitted = std::function<void(std::shared_ptr<Pass>)>;

    /// The result of `EnterInner`: the right to run, or the document from before the running change. Both are null if
    /// the change did not end in time.
    struct InnerPass
    {
        std::shared_ptr<Pass> pass;
        std::shared_ptr<nlohmann::json const> before;
    };

    /// The changes of an `independent` place share no state with the rest of the tree.
    explicit ResourceLocks(std::vector<Place> const& independent = {});
    ~ResourceLocks(); ///< drops the waiting requests; passes may outlive it

    ResourceLocks(ResourceLocks const&) = delete;
    ResourceLocks& operator=(ResourceLocks const&) = delete;

    /// Calls `admitted` when the turn of this request comes: at once on the calling thread, or later on the thread that
    /// releases a pass. `admitted` must pass the work on and return soon. A `CHANGE_TREE` must be carried out on the
    /// thread that calls `Enter`. Throws std::bad_alloc if memory runs out before the request is admitted; `admitted`
    /// is then never called.
    void Enter(Place const& place, Mode mode, Admitted admitted);

    /// Enters a read on behalf of a running request, which other requests may be waiting for. It therefore passes
    /// waiting requests. During a change it returns the document from before the change, if `takesBefore` is true and
    /// the document is known; otherwise it waits up to `patienceUsec` microseconds for the end of the change. The
    /// thread that changes a whole tree may read in that tree at once.
    InnerPass EnterInner(Place const& place, bool takesBefore, uint64 patienceUsec);

private:
    struct State;
    class Holder;

    std::shared_ptr<State> const state; // shared with the passes, which may outlive this object
};

} // namespace ZuRest
