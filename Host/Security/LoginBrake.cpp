#include "Host/Security/LoginBrake.h"

#include <algorithm>
#include <functional>

namespace ZuHost
{

namespace
{

constexpr char const* SHARED_KEY = ""; // of all users and addresses beyond `MAX_ROWS`

std::string UserKey(std::string const& user)
{
    return "user " + user;
}

std::string SourceKey(std::string const& source)
{
    return "from " + source;
}

std::string PairKey(std::string const& user, std::string const& source)
{
    return user + '\0' + source;
}

uint64 WaitAfter(uint64 failures)
{
    if (failures < LoginBrake::PROMPT_FAILURES)
    {
        return 0;
    }
    constexpr uint64 MAX_DOUBLINGS = 16;
    uint64 const doublings = std::min(failures - LoginBrake::PROMPT_FAILURES, MAX_DOUBLINGS);
    return std::min(LoginBrake::FIRST_WAIT_USEC << doublings, LoginBrake::MAX_WAIT_USEC);
}

bool IsForgotten(uint64 lastUsec, uint64 nowUsec)
{
    return lastUsec + LoginBrake::MEMORY_USEC <= nowUsec;
}

} // namespace

LoginBrake::LoginBrake() = default;
LoginBrake::~LoginBrake() = default;

uint64 LoginBrake::Begin(std::string const& user, std::string const& source, uint64 nowUsec)
{
    Zu::MutexLock const guard(lock);
    std::vector<Row*> const touched = RowsOf(user, source, nowUsec);
    uint64 freeUsec = nowUsec;
    for (Row const* const row : touched)
    {
        freeUsec = std::max(freeUsec, row->freeUsec);
    }
    if (freeUsec > nowUsec)
    {
        return freeUsec - nowUsec;
    }
    for (Row* const row : touched)
    {
        ++row->failures;
        row->freeUsec = nowUsec + WaitAfter(row->failures);
        row->lastUsec = nowUsec;
    }
    return 0;
}

void LoginBrake::Cancel(std::string const& user, std::string const& source, uint64 nowUsec)
{
    Zu::MutexLock const guard(lock);
    TakeBack(user, source, nowUsec);
}

void LoginBrake::Succeed(std::string const& user, std::string const& source, uint64 nowUsec)
{
    Zu::MutexLock const guard(lock);
    TakeBack(user, source, nowUsec);
    Remember(PairKey(user, source), nowUsec);
}

/// The failures before this attempt stay: the holder of one password may guess at others.
void LoginBrake::TakeBack(std::string const& user, std::string const& source, uint64 nowUsec)
{
    for (Row* const row : RowsOf(user, source, nowUsec))
    {
        row->failures -= std::min<uint64>(row->failures, 1);
        row->freeUsec = std::min(row->freeUsec, nowUsec);
    }
}

std::vector<LoginBrake::Row*> LoginBrake::RowsOf(std::string const& user, std::string const& source, uint64 nowUsec)
{
    auto const pair = known.find(PairKey(user, source));
    if (pair != known.end())
    {
        return {&pair->second};
    }
    return {&RowOf(UserKey(user), nowUsec), &RowOf(SourceKey(source), nowUsec)};
}

/// References to rows stay valid until `nowUsec` changes.
LoginBrake::Row& LoginBrake::RowOf(std::string const& key, uint64 nowUsec)
{
    auto found = rows.find(key);
    if (found == rows.end() && rows.size() >= MAX_ROWS)
    {
        std::erase_if(rows, [nowUsec](auto const& one) { return IsForgotten(one.second.lastUsec, nowUsec); });
    }
    if (found == rows.end())
    {
        found = rows.try_emplace(rows.size() < MAX_ROWS ? key : SHARED_KEY, Row{0, 0, nowUsec}).first;
    }
    if (IsForgotten(found->second.lastUsec, nowUsec))
    {
        found->second = Row{0, 0, nowUsec};
    }
    return found->second;
}

void LoginBrake::Remember(std::string const& pair, uint64 nowUsec)
{
    if (known.size() >= MAX_KNOWN && !known.contains(pair))
    {
        known.erase(std::ranges::min_element(known, {}, [](auto const& one) { return one.second.lastUsec; }));
    }
    known[pair] = Row{0, nowUsec, nowUsec};
}

} // namespace ZuHost
