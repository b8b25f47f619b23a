#pragma once

#include "Host/Security/ICallerSource.h"
#include "Host/Security/UtcTime.h"
#include "ZuApi/Signal.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <functional>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZuHost
{

class SecurityStore;

/// The named tokens of programs. A token is a random secret of 256 bits with a role and, if wanted, an end.
///
/// Only a hash of the secret is kept. A token that has been seen to have ended stays so, even if the clock is set back.
/// If the stored tokens cannot be read, no token is right and none can be made.
/// All operations are thread-safe. `Make`, `Revoke` and `Save` may wait for the disk, the others do not block.
class TokenStore final : public ICallerSource
{
public:
    static constexpr std::size_t MAX_TOKENS = 64;
    static constexpr std::size_t MAX_NAME_BYTES = 64;
    static constexpr int64 MAX_LIFE_SECONDS = 10 * 366 * 86'400LL;
    static constexpr std::string_view PREFIX = "zc_"; ///< so that tools that search for secrets find a token

    /// What may be shown of a token. Times are seconds since 1970 in UTC.
    struct Token
    {
        std::string name;
        ZuCommon::Role role = ZuCommon::Role::NONE;
        int64 madeSeconds = 0;
        std::optional<int64> endSeconds;
        std::optional<int64> lastUseSeconds; ///< rounded down to a minute
        bool hasEnded = false;
    };

    /// The present time in seconds since 1970 in UTC.
    using Clock = std::function<int64()>;

    /// Reads the stored tokens: see `Fault`. The store outlives this.
    explicit TokenStore(SecurityStore& usedStore, Clock newClock = &UtcTime::Now);
    ~TokenStore() override;

    TokenStore(TokenStore const&) = delete;
    TokenStore& operator=(TokenStore const&) = delete;

    /// A sentence for the user if the stored tokens could not be read; empty otherwise.
    std::string const& Fault() const noexcept;

    std::vector<Token> List() const;

    /// Throws `Zu::Status::NOT_FOUND` if there is no such token.
    Token Get(std::string const& name) const;

    /// Makes a token and returns its secret, which cannot be read again. Throws `Zu::Status::BAD_ARGUMENT` for an
    /// invalid name or end, `Zu::Status::ALREADY_EXISTS` and `Zu::Status::FULL`, and as `SecurityStore::Save` does.
    std::string Make(std::string const& name, ZuCommon::Role role, std::optional<int64> endSeconds);

    /// Ends a token at once and removes it. Throws `Zu::Status::NOT_FOUND` if there is no such token. If the removal
    /// cannot be stored, throws as `SecurityStore::Save` does; the token has ended nevertheless, until the next start.
    void Revoke(std::string const& name);

    /// Stores the last uses. Throws as `SecurityStore::Save` does.
    void Save();

    /// Fires when a token has been revoked, on the thread that revokes it.
    Zu::Signal<>& RevokedSignal();

    bool HasCallers() const noexcept override;
    Proof Find(Credentials const& credentials) override;
    bool IsCurrent(ZuRest::Caller const& caller) const noexcept override;

private:
    /// A token and what only this class knows of it.
    struct Entry
    {
        Token token;
        bool isRevoked = false; ///< it waits for the removal from the disk
    };

    using Entries = std::map<std::string, Entry, std::less<>>; // by the hash of the secret

    static Entries Read(nlohmann::json const& document);
    static nlohmann::json DocumentOf(Entries const& entries);
    void CheckReadable() const;
    void Store(Entries const& changed);
    Entries Copy() const;
    bool HasEnded(Token const& token) const;

    SecurityStore& store;
    Clock const clock;
    std::string fault;
    Zu::Signal<> revokedSignal;

    // Held during a change and its save. `lock` and the lock of the store are taken under it.
    Zu::Mutex changeLock;

    mutable Zu::Mutex lock; // a leaf
    Entries entries ZU_GUARDED_BY(lock);
    bool isUsed ZU_GUARDED_BY(lock) = false; // there are uses that are not stored
};

} // namespace ZuHost
