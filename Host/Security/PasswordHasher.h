#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ZuHost
{

/// Hashes passwords with Argon2id, which makes a stolen archive expensive to guess from.
///
/// A hash takes 64 MiB and about 90 ms, so one is computed at a time. A further call waits; calls beyond the limit of
/// the queue throw `Zu::Status::BUSY`, so that logins never occupy all threads that serve requests. All operations are
/// thread-safe.
class PasswordHasher final
{
public:
    static constexpr std::size_t MEMORY_BYTES = 64 * 1024 * 1024;
    static constexpr uint64 PASSES = 2;
    static constexpr uint64 MAX_WAITING = 1; ///< calls that wait for the running one

    /// The cost of a hash. Tests take less.
    struct Cost
    {
        std::size_t memoryBytes = MEMORY_BYTES;
        uint64 passes = PASSES;
    };

    PasswordHasher();
    explicit PasswordHasher(Cost newCost);
    ~PasswordHasher();

    PasswordHasher(PasswordHasher const&) = delete;
    PasswordHasher& operator=(PasswordHasher const&) = delete;

    /// Returns the hash of a prepared password, with its salt and cost in the text. Throws `Zu::Status::BUSY` with a
    /// sentence if too many calls wait or if the system has not enough memory.
    std::string Hash(std::string const& password);

    /// Whether `hash` belongs to a prepared password. A text that is no hash belongs to no password; the call takes the
    /// same time as for a hash. Throws as `Hash`.
    bool Verify(std::string const& hash, std::string const& password);

    /// Whether the text has the form of a hash.
    static bool IsHash(std::string const& text);

private:
    class Turn;
    struct Parts;

    static std::optional<Parts> PartsOf(std::string_view text);
    static std::unique_ptr<Parts> MakeDecoy(Cost const& cost);

    Cost const cost;
    std::unique_ptr<Parts const> const decoy; // checked in place of a hash that is missing

    Zu::Mutex lock; // a leaf: no other lock is taken under it
    Zu::CondVar freed;
    uint64 waiting ZU_GUARDED_BY(lock) = 0;
    bool isBusy ZU_GUARDED_BY(lock) = false;
};

} // namespace ZuHost
