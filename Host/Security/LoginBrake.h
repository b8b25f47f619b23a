#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <map>
#include <string>
#include <vector>

namespace ZuHost
{

/// Slows down those who guess passwords, per user and per address.
///
/// The first failures have no consequence. Then a failure makes the next attempt wait, twice as long each time up to a
/// minute. An attempt within this time is refused without a look at the password and does not lengthen the time, so
/// that nobody is locked out for good. An address from which a user has logged in before is counted apart: a guesser
/// elsewhere cannot keep this user out. Failures are forgotten after a while, and the memory is bounded.
/// All operations are thread-safe.
class LoginBrake final
{
public:
    static constexpr uint64 PROMPT_FAILURES = 5;
    static constexpr uint64 FIRST_WAIT_USEC = 1'000'000;
    static constexpr uint64 MAX_WAIT_USEC = 60'000'000;
    static constexpr uint64 MEMORY_USEC = 15 * 60'000'000ULL; ///< a row without attempts is forgotten after this time
    static constexpr std::size_t MAX_ROWS = 1024;             ///< of users and addresses; further ones share one row
    static constexpr std::size_t MAX_KNOWN = 256;             ///< users with an address; the oldest is forgotten first

    LoginBrake();
    ~LoginBrake();

    LoginBrake(LoginBrake const&) = delete;
    LoginBrake& operator=(LoginBrake const&) = delete;

    /// Begins an attempt for the user with the comparison key `user` from the address `source`. Returns 0, and the
    /// attempt counts as failed until `Succeed`; or the time to wait, and the attempt must be refused.
    uint64 Begin(std::string const& user, std::string const& source, uint64 nowUsec);

    /// Takes an attempt back that ended without a look at the password.
    void Cancel(std::string const& user, std::string const& source, uint64 nowUsec);

    /// Notes that the attempt has shown the right password.
    void Succeed(std::string const& user, std::string const& source, uint64 nowUsec);

private:
    struct Row
    {
        uint64 failures = 0;
        uint64 freeUsec = 0; ///< when the next attempt may begin
        uint64 lastUsec = 0;
    };

    using Rows = std::map<std::string, Row>;

    std::vector<Row*> RowsOf(std::string const& user, std::string const& source, uint64 nowUsec) ZU_REQUIRES(lock);
    Row& RowOf(std::string const& key, uint64 nowUsec) ZU_REQUIRES(lock);
    void TakeBack(std::string const& user, std::string const& source, uint64 nowUsec) ZU_REQUIRES(lock);
    void Remember(std::string const& pair, uint64 nowUsec) ZU_REQUIRES(lock);

    Zu::Mutex lock;                 // a leaf
    Rows rows ZU_GUARDED_BY(lock);  // by user, and by address
    Rows known ZU_GUARDED_BY(lock); // by user and address, after a success
};

} // namespace ZuHost
