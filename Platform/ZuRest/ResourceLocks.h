#pragma once

#include "ZuRest/Place.h"
#include "wApi/wTypes.h"

#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>

namespace ZuRest
{

/// Who may run beside whom in the resource tree.
///
/// Reads of one place run side by side, a change of it alone; changes of one tree run one at a time. Who has to wait is
/// called when it is his turn, in the order of arrival, and blocks no thread: a change that takes long costs none but
/// those who ask for the same place. Any thread may call.
class ZUPLATFORM_API ResourceLocks
{
public:
    enum class Mode
    {
        READ,
        CHANGE,
        CHANGE_TREE ///< of all places of the tree: alone in it
    };

    /// The right to run, for as long as it lives.
    class ZUPLATFORM_API Pass
    {
    public:
        virtual ~Pass();

        /// The document at the head of the place as it was before this change: those see it who cannot wait for the end.
        virtual void ShowBefore(std::shared_ptr<nlohmann::json const> document) = 0;

        /// The same for another place that this change includes.
        virtual void ShowBeforeAt(Place const& place, std::shared_ptr<nlohmann::json const> document) = 0;
    };

    using Admitted = std::function<void(std::shared_ptr<Pass>)>;

    /// What a read from the inside gets: the right to run, or what there was before the change that is running; neither
    /// when the change did not end in time.
    struct InnerPass
    {
        std::shared_ptr<Pass> pass;
        std::shared_ptr<nlohmann::json const> before;
    };

    ResourceLocks();
    ~ResourceLocks(); ///< nobody waits any more, and passes may outlive it

    ResourceLocks(ResourceLocks const&) = delete;
    ResourceLocks& operator=(ResourceLocks const&) = delete;

    /// Calls `admitted` when it is the turn of this one: at once on this thread, or on that of the one who leaves. It hands
    /// the work on and comes back soon. A change of a whole tree is carried out on the thread that has called this. Throws
    /// std::bad_alloc for one who cannot be let in for want of memory, and then never calls it.
    void Enter(Place const& place, Mode mode, Admitted admitted);

    /// For a read that a running request asks for, which others may be waiting for: it passes those who only wait, and a
    /// change that is running either shows what was before, when `takesBefore`, or is waited for up to `patienceUsec`. The
    /// thread that changes a whole tree passes itself.
    InnerPass EnterInner(Place const& place, bool takesBefore, uint64 patienceUsec);

private:
    struct State;
    class Holder;

    std::shared_ptr<State> const state; // shared with the passes
};

} // namespace ZuRest
