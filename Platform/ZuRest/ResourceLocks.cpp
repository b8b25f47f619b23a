#include "ZuRest/ResourceLocks.h"

#include "ZuApi/Guard.h"
#include "wApi/wMutex.h"
#include "wApi/wTime.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iterator>
#include <list>
#include <map>
#include <new>
#include <set>
#include <thread>
#include <utility>

namespace ZuRest
{

ResourceLocks::Pass::~Pass() = default;

struct ResourceLocks::State : std::enable_shared_from_this<State>
{
    explicit State(std::vector<Place> const& independentPlaces)
        : independent(independentPlaces.begin(), independentPlaces.end())
    {
    }

    struct Occupants
    {
        uint64 readers = 0;
        bool isChanging = false;
        std::shared_ptr<nlohmann::json const> before; // the document from before the running change
    };

    struct Waiting
    {
        Place place;
        Mode mode;
        std::thread::id entrant;
        Admitted admitted;
        std::shared_ptr<Pass> pass; ///< set when its turn has come
    };

    /// The changes that wait for each other have one writer: that of the tree, or of an independent place.
    Place WriterOf(Place const& place) const
    {
        return independent.contains(place) ? place : Place{place.tree, ""};
    }

    bool IsChanging(Place const& place) const ZU_REQUIRES(lock)
    {
        auto const found = occupants.find(place);
        return closedTrees.contains(place.tree) || (found != occupants.end() && found->second.isChanging);
    }

    /// Whether the calling thread is changing the whole tree, and may read in it.
    bool IsOwnTree(std::string const& tree) const ZU_REQUIRES(lock)
    {
        auto const found = closedTrees.find(tree);
        return found != closedTrees.end() && found->second == std::this_thread::get_id();
    }

    bool HasReaders(Place const& place) const ZU_REQUIRES(lock)
    {
        auto const found = occupants.find(place);
        return found != occupants.end() && found->second.readers != 0;
    }

    bool HasReadersInTree(std::string const& tree) const ZU_REQUIRES(lock)
    {
        return std::ranges::any_of(
            occupants, [&tree](auto const& one) { return one.first.tree == tree && one.second.readers != 0; });
    }

    std::shared_ptr<Pass> Occupy(Place const& place, Mode mode, std::thread::id entrant) ZU_REQUIRES(lock);
    void Leave(Place const& place, Mode mode) ZU_EXCLUDES(lock);
    void Reopen(std::string const& tree) ZU_REQUIRES(lock);

    /// The places and writers of changes that wait only for readers, so that no later request passes them.
    struct Held
    {
        std::set<Place> places;
        std::set<Place> writers;
        std::set<std::string> trees;        // of a waiting `CHANGE_TREE`: no later change enters
        std::set<std::string> closingTrees; // and no later read
    };

    static bool HasAny(std::set<Place> const& places, std::string const& tree)
    {
        return std::ranges::any_of(places, [&tree](Place const& place) { return place.tree == tree; });
    }

    bool MayRun(Waiting const& one, Held& held) const ZU_REQUIRES(lock)
    {
        switch (one.mode)
        {
        case Mode::READ:
            return !IsChanging(one.place) && !held.places.contains(one.place) &&
                   !held.closingTrees.contains(one.place.tree);
        case Mode::CHANGE:
            return MayChange(one.place, held);
        case Mode::CHANGE_TREE:
            break;
        }
        return MayChangeTree(one.place.tree, held);
    }

    bool MayChange(Place const& place, Held& held) const ZU_REQUIRES(lock)
    {
        Place const writer = WriterOf(place);
        if (writers.contains(writer) || closedTrees.contains(place.tree) || held.writers.contains(writer) ||
            held.trees.contains(place.tree))
        {
            return false;
        }
        if (HasReaders(place))
        {
            held.places.insert(place);
            held.writers.insert(writer);
            return false;
        }
        return true;
    }

    bool MayChangeTree(std::string const& tree, Held& held) const ZU_REQUIRES(lock)
    {
        bool const isEarlier = !HasAny(held.writers, tree) && !held.trees.contains(tree);
        bool const hasWriters = HasAny(writers, tree);
        if (isEarlier && !hasWriters && !HasReadersInTree(tree))
        {
            return true;
        }
        held.trees.insert(tree);
        if (isEarlier && !hasWriters)
        {
            held.closingTrees.insert(tree);
        }
        return false;
    }

    /// Removes the requests that may run now from `waiting` and returns them. If memory runs out, sets `isShort`; the
    /// remaining requests wait until the next request enters or leaves.
    std::list<Waiting> NextTurns(bool& isShort) ZU_REQUIRES(lock)
    {
        std::list<Waiting> turns;
        Held held;
        isShort = false;
        try
        {
            for (auto next = waiting.begin(); next != waiting.end();)
            {
                auto const one = next++;
                if (MayRun(*one, held))
                {
                    one->pass = Occupy(one->place, one->mode, one->entrant);
                    turns.splice(turns.end(), waiting, one);
                }
            }
        }
        catch (std::bad_alloc const&)
        {
            isShort = true;
        }
        return turns;
    }

    static void Call(std::list<Waiting> turns)
    {
        for (Waiting& turn : turns)
        {
            ZU_GUARD_BOUNDARY([&turn] { turn.admitted(std::move(turn.pass)); });
        }
    }

    Zu::Mutex lock; // a leaf: no callback runs under it
    Zu::CondVar changeEnded;
    std::map<Place, Occupants> occupants ZU_GUARDED_BY(lock); // only places with a running request
    std::set<Place> const independent;
    std::set<Place> writers ZU_GUARDED_BY(lock); // of the running changes
    /// The trees that a `CHANGE_TREE` is changing, each with the thread that entered it.
    std::map<std::string, std::thread::id> closedTrees ZU_GUARDED_BY(lock);
    std::list<Waiting> waiting ZU_GUARDED_BY(lock);
};

class ResourceLocks::Holder final : public Pass
{
public:
    Holder(std::shared_ptr<State> sharedState, Place heldPlace, Mode heldMode)
        : state(std::move(sharedState)), place(std::move(heldPlace)), mode(heldMode)
    {
    }

    ~Holder() override
    {
        if (isInside)
        {
            ZU_GUARD_DESTRUCTOR([this] { state->Leave(place, mode); });
        }
    }

    /// Notes that the place is occupied, so that the destructor leaves it.
    void NoteInside() noexcept
    {
        isInside = true;
    }

    Holder(Holder const&) = delete;
    Holder& operator=(Holder const&) = delete;

    void ShowBefore(std::shared_ptr<nlohmann::json const> document) override
    {
        ShowBeforeAt(place, std::move(document));
    }

    void ShowBeforeAt(Place const& shownPlace, std::shared_ptr<nlohmann::json const> document) override
    {
        {
            Zu::MutexLock const guard(state->lock);
            state->occupants[shownPlace].before = std::move(document);
        }
        state->changeEnded.NotifyAll(); // a waiting read can use it instead
    }

private:
    std::shared_ptr<State> const state;
    Place const place;
    Mode const mode;
    bool isInside = false;
};

std::shared_ptr<ResourceLocks::Pass> ResourceLocks::State::Occupy(Place const& place, Mode mode,
                                                                  std::thread::id entrant)
{
    auto const pass = std::make_shared<Holder>(shared_from_this(), place, mode);
    // An entry without readers and changes, which a failure below leaves, has no effect.
    Occupants& here = occupants[place];
    if (mode == Mode::READ)
    {
        ++here.readers;
    }
    else
    {
        if (mode == Mode::CHANGE_TREE)
        {
            closedTrees.emplace(place.tree, entrant);
        }
        try
        {
            writers.insert(WriterOf(place));
        }
        catch (...)
        {
            if (mode == Mode::CHANGE_TREE)
            {
                closedTrees.erase(place.tree);
            }
            throw;
        }
        here.isChanging = true;
    }
    pass->NoteInside(); // last: the destructor must only undo a complete entry
    return pass;
}

void ResourceLocks::State::Leave(Place const& place, Mode mode)
{
    std::list<Waiting> turns;
    {
        Zu::MutexLock const guard(lock);
        Occupants& here = occupants[place];
        if (mode == Mode::READ)
        {
            --here.readers;
        }
        else
        {
            here = {};
            writers.erase(WriterOf(place));
        }
        if (here.readers == 0 && here.before == nullptr)
        {
            occupants.erase(place);
        }
        if (mode == Mode::CHANGE_TREE)
        {
            Reopen(place.tree);
        }
        bool isShort = false;
        turns = NextTurns(isShort);
    }
    changeEnded.NotifyAll();
    Call(std::move(turns));
}

void ResourceLocks::State::Reopen(std::string const& tree)
{
    closedTrees.erase(tree);
    std::erase_if(occupants, [&tree](auto const& one) { return one.first.tree == tree && one.second.readers == 0; });
}

ResourceLocks::ResourceLocks(std::vector<Place> const& independent) : state(std::make_shared<State>(independent))
{
}

ResourceLocks::~ResourceLocks()
{
    std::list<State::Waiting> forgotten; // destroyed after the lock is released: the callbacks may own any object
    Zu::MutexLock const guard(state->lock);
    forgotten.swap(state->waiting);
}

void ResourceLocks::Enter(Place const& place, Mode mode, Admitted admitted)
{
    std::list<State::Waiting> turns;
    bool isForgotten = false;
    {
        Zu::MutexLock const guard(state->lock);
        state->waiting.push_back({place, mode, std::this_thread::get_id(), std::move(admitted), nullptr});
        auto const own = std::prev(state->waiting.end());
        bool isShort = false;
        turns = state->NextTurns(isShort);
        isForgotten = isShort && own->pass == nullptr;
        if (isForgotten)
        {
            state->waiting.erase(own); // no other request might come that would admit it
        }
    }
    State::Call(std::move(turns));
    if (isForgotten)
    {
        throw std::bad_alloc();
    }
}

ResourceLocks::InnerPass ResourceLocks::EnterInner(Place const& place, bool takesBefore, uint64 patienceUsec)
{
    uint64 const deadlineUsec = wTime_AfterUsec(patienceUsec);
    auto const before = [&]() ZU_REQUIRES(state->lock) {
        return takesBefore && state->IsChanging(place) ? state->occupants[place].before : nullptr;
    };
    auto const mayRead = [&]() ZU_REQUIRES(state->lock) {
        return !state->IsChanging(place) || state->IsOwnTree(place.tree);
    };
    Zu::MutexLock const guard(state->lock);
    state->changeEnded.WaitUntil(state->lock, deadlineUsec,
                                 [&]() ZU_REQUIRES(state->lock) { return mayRead() || before() != nullptr; });
    if (mayRead())
    {
        return {state->Occupy(place, Mode::READ, std::this_thread::get_id()), nullptr};
    }
    return {nullptr, before()};
}

} // namespace ZuRest
