#include "ZuRest/ResourceLocks.h"

#include "ZuApi/Guard.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <condition_variable>
#include <list>
#include <map>
#include <mutex>
#include <set>
#include <utility>
#include <vector>

namespace ZuRest
{

ResourceLocks::Pass::~Pass() = default;

struct ResourceLocks::State : std::enable_shared_from_this<State>
{
    struct Occupants
    {
        uint64 readers = 0;
        bool isChanging = false;
        std::shared_ptr<nlohmann::json const> before; // of the change that is running
    };

    struct Waiting
    {
        Place place;
        Mode mode;
        Admitted admitted;
    };

    struct Turn
    {
        Admitted admitted;
        std::shared_ptr<Pass> pass;
    };

    bool IsChanging(Place const& place) const
    {
        auto const found = occupants.find(place);
        return found != occupants.end() && found->second.isChanging;
    }

    bool HasReaders(Place const& place) const
    {
        auto const found = occupants.find(place);
        return found != occupants.end() && found->second.readers != 0;
    }

    std::shared_ptr<Pass> Occupy(Place const& place, Mode mode);
    void Leave(Place const& place, Mode mode);

    /// Whether this one may run now; if a change waits for readers alone, nobody passes it by.
    bool MayRun(Waiting const& one, std::set<Place>& held, std::set<std::string>& heldTrees) const
    {
        if (one.mode == Mode::READ)
        {
            return !IsChanging(one.place) && !held.contains(one.place);
        }
        if (changingTrees.contains(one.place.tree) || heldTrees.contains(one.place.tree))
        {
            return false;
        }
        if (HasReaders(one.place))
        {
            held.insert(one.place);
            heldTrees.insert(one.place.tree);
            return false;
        }
        return true;
    }

    std::vector<Turn> NextTurns()
    {
        std::vector<Turn> turns;
        std::set<Place> held;
        std::set<std::string> heldTrees;
        for (auto one = waiting.begin(); one != waiting.end();)
        {
            if (!MayRun(*one, held, heldTrees))
            {
                ++one;
                continue;
            }
            turns.push_back({std::move(one->admitted), Occupy(one->place, one->mode)});
            one = waiting.erase(one);
        }
        return turns;
    }

    static void Call(std::vector<Turn> turns)
    {
        for (Turn& turn : turns)
        {
            ZU_GUARD_BOUNDARY([&turn] { turn.admitted(std::move(turn.pass)); });
        }
    }

    std::mutex lock; // a leaf: guards all below; nobody is called under it
    std::condition_variable changeEnded;
    std::map<Place, Occupants> occupants; // of the places where somebody runs
    std::set<std::string> changingTrees;
    std::list<Waiting> waiting;
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
        ZU_GUARD_DESTRUCTOR([this] { state->Leave(place, mode); });
    }

    Holder(Holder const&) = delete;
    Holder& operator=(Holder const&) = delete;

    void ShowBefore(std::shared_ptr<nlohmann::json const> document) override
    {
        {
            std::scoped_lock const guard(state->lock);
            state->occupants[place].before = std::move(document);
        }
        state->changeEnded.notify_all(); // for a read that waits it is as good
    }

private:
    std::shared_ptr<State> const state;
    Place const place;
    Mode const mode;
};

std::shared_ptr<ResourceLocks::Pass> ResourceLocks::State::Occupy(Place const& place, Mode mode)
{
    auto pass = std::make_shared<Holder>(shared_from_this(), place, mode);
    Occupants& here = occupants[place];
    if (mode == Mode::READ)
    {
        ++here.readers;
        return pass;
    }
    here.isChanging = true;
    changingTrees.insert(place.tree);
    return pass;
}

void ResourceLocks::State::Leave(Place const& place, Mode mode)
{
    std::vector<Turn> turns;
    {
        std::scoped_lock const guard(lock);
        Occupants& here = occupants[place];
        if (mode == Mode::CHANGE)
        {
            here = {};
            changingTrees.erase(place.tree);
        }
        else
        {
            --here.readers;
        }
        if (here.readers == 0)
        {
            occupants.erase(place);
        }
        turns = NextTurns();
    }
    changeEnded.notify_all();
    Call(std::move(turns));
}

ResourceLocks::ResourceLocks() : state(std::make_shared<State>())
{
}

ResourceLocks::~ResourceLocks()
{
    std::list<State::Waiting> forgotten; // ends when the lock is free: what was waiting may hold anything
    std::scoped_lock const guard(state->lock);
    forgotten.swap(state->waiting);
}

void ResourceLocks::Enter(Place const& place, Mode mode, Admitted admitted)
{
    std::vector<State::Turn> turns;
    {
        std::scoped_lock const guard(state->lock);
        state->waiting.push_back({place, mode, std::move(admitted)});
        turns = state->NextTurns();
    }
    State::Call(std::move(turns));
}

ResourceLocks::InnerPass ResourceLocks::EnterInner(Place const& place, bool takesBefore, uint64 patienceUsec)
{
    auto const deadline = std::chrono::system_clock::now() + std::chrono::microseconds(patienceUsec);
    auto const before = [&] {
        return takesBefore && state->IsChanging(place) ? state->occupants[place].before : nullptr;
    };
    std::unique_lock guard(state->lock);
    state->changeEnded.wait_until(guard, deadline, [&] { return !state->IsChanging(place) || before() != nullptr; });
    if (auto document = before())
    {
        return {nullptr, std::move(document)};
    }
    return {state->IsChanging(place) ? nullptr : state->Occupy(place, Mode::READ), nullptr};
}

} // namespace ZuRest
