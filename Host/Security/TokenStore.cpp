#include "Host/Security/TokenStore.h"

#include "Host/Audit/Sha256.h"
#include "Host/Http/BearerToken.h"
#include "Host/Http/IGatekeeper.h"
#include "Host/Security/SecurityStore.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuRest/Caller.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <nlohmann/json.hpp>
#include <openssl/rand.h>
#include <utility>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;
using Token = TokenStore::Token;

constexpr char const* TOKENS_DOCUMENT = "security/tokens";
constexpr char const* KIND = "token "; // before the name in the name of a caller
constexpr std::size_t HASH_DIGITS = 64;

/// 256 random bits in the alphabet of base64url.
std::string RandomText()
{
    constexpr std::string_view ALPHABET = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    constexpr std::size_t BYTES = 32;
    constexpr std::size_t BITS_PER_CHARACTER = 6;
    std::array<unsigned char, BYTES + 1> bytes{}; // the last one stays 0: the last character takes bits of it
    if (RAND_bytes(bytes.data(), BYTES) != 1)
    {
        ZU_THROW(Zu::Status::FAILURE, "The system offers no random numbers.");
    }
    std::string text;
    for (std::size_t bit = 0; bit < 8 * BYTES; bit += BITS_PER_CHARACTER)
    {
        unsigned const pair = unsigned{bytes.at(bit / 8)} << 8U | bytes.at(bit / 8 + 1);
        text.push_back(ALPHABET[pair >> (16 - BITS_PER_CHARACTER - bit % 8) & 0x3FU]);
    }
    return text;
}

void CheckName(std::string const& name)
{
    auto const isFine = [](unsigned char one) {
        return one < 0x80 && (std::isalnum(one) != 0 || one == ' ' || one == '-' || one == '_' || one == '.');
    };
    bool const isName = !name.empty() && name.size() <= TokenStore::MAX_NAME_BYTES && name.front() != ' ' &&
                        name.back() != ' ' && std::ranges::all_of(name, isFine);
    if (!isName || name == "file" || name == "." || name == "..") // "token file" is the caller of `--token`
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "The name of a token has 1 to %zu letters, digits, blanks, dots, hyphens and underscores; it does not "
                 "begin or end with a blank, and 'file' is taken.",
                 TokenStore::MAX_NAME_BYTES);
    }
}

Json NumberOrNull(std::optional<int64> seconds)
{
    return seconds.has_value() ? Json(*seconds) : Json();
}

std::optional<int64> TimeIn(Json const& value)
{
    return value.is_null() ? std::nullopt : std::optional(value.get<int64>());
}

auto FindNamed(auto& entries, std::string_view name)
{
    return std::ranges::find_if(entries, [name](auto const& one) { return one.second.token.name == name; });
}

} // namespace

TokenStore::TokenStore(SecurityStore& usedStore, Clock newClock) : store(usedStore), clock(std::move(newClock))
{
    try
    {
        entries = Read(store.Load(TOKENS_DOCUMENT));
    }
    catch (...)
    {
        fault = "The tokens of programs cannot be read, so none is accepted: " + Zu::CaughtReason();
    }
}

TokenStore::~TokenStore() = default;

std::string const& TokenStore::Fault() const noexcept
{
    return fault;
}

std::vector<Token> TokenStore::List() const
{
    CheckReadable();
    std::vector<Token> list;
    {
        Zu::MutexLock const guard(lock);
        for (auto const& [hash, entry] : entries)
        {
            list.push_back(entry.token);
            list.back().hasEnded = entry.isRevoked || HasEnded(entry.token);
        }
    }
    std::ranges::sort(list, {}, &Token::name);
    return list;
}

Token TokenStore::Get(std::string const& name) const
{
    std::vector<Token> const list = List();
    auto const found = std::ranges::find(list, name, &Token::name);
    if (found == list.end())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no token '%s'.", name.c_str());
    }
    return *found;
}

std::string TokenStore::Make(std::string const& name, ZuCommon::Role role, std::optional<int64> endSeconds)
{
    CheckReadable();
    CheckName(name);
    int64 const now = clock();
    if (endSeconds.has_value() && (*endSeconds <= now || *endSeconds > now + MAX_LIFE_SECONDS))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The end of a token lies in the future, and within ten years.");
    }
    Zu::MutexLock const changing(changeLock);
    Entries changed = Copy();
    if (FindNamed(changed, name) != changed.end())
    {
        ZU_THROW(Zu::Status::ALREADY_EXISTS, "There is a token '%s' already: delete it first.", name.c_str());
    }
    if (changed.size() >= MAX_TOKENS)
    {
        ZU_THROW(Zu::Status::FULL, "There are %zu tokens already: delete one.", MAX_TOKENS);
    }
    std::string secret = std::string(PREFIX) + RandomText();
    changed.emplace(Sha256Hex(secret), Entry{{name, role, now, endSeconds, std::nullopt, false}});
    Store(changed);
    return secret;
}

void TokenStore::Revoke(std::string const& name)
{
    CheckReadable();
    Zu::MutexLock const changing(changeLock);
    {
        Zu::MutexLock const guard(lock);
        auto const found = FindNamed(entries, name);
        if (found == entries.end())
        {
            ZU_THROW(Zu::Status::NOT_FOUND, "There is no token '%s'.", name.c_str());
        }
        found->second.isRevoked = true; // at once, whatever the disk does
    }
    revokedSignal.Fire();
    Store(Copy());
}

void TokenStore::Save()
{
    Zu::MutexLock const changing(changeLock);
    bool isDue = false;
    {
        Zu::MutexLock const guard(lock);
        isDue = isUsed;
    }
    if (isDue)
    {
        Store(Copy());
    }
}

Zu::Signal<>& TokenStore::RevokedSignal()
{
    return revokedSignal;
}

bool TokenStore::HasCallers() const noexcept
{
    Zu::MutexLock const guard(lock);
    return !fault.empty() || !entries.empty();
}

Proof TokenStore::Find(Credentials const& credentials)
{
    std::string_view const shown = BearerToken::In(credentials.authorization);
    if (shown.empty())
    {
        return {};
    }
    Proof proof;
    std::string const hash = Sha256Hex(shown);
    Zu::MutexLock const guard(lock);
    auto const found = entries.find(hash);
    if (found == entries.end() || found->second.isRevoked)
    {
        proof.isWrongSecret = true;
        return proof;
    }
    Token& token = found->second.token;
    isUsed = true;
    if (HasEnded(token))
    {
        token.hasEnded = true; // for good, even if the clock is set back
        proof.isWrongSecret = true;
        return proof;
    }
    constexpr int64 SECONDS_PER_MINUTE = 60;
    token.lastUseSeconds = clock() / SECONDS_PER_MINUTE * SECONDS_PER_MINUTE;
    proof.caller = KnownCaller{token.role, KIND + token.name, ""};
    return proof;
}

bool TokenStore::IsCurrent(ZuRest::Caller const& caller) const noexcept
{
    if (!caller.name.starts_with(KIND))
    {
        return false;
    }
    Zu::MutexLock const guard(lock);
    auto const found = FindNamed(entries, std::string_view(caller.name).substr(std::string_view(KIND).size()));
    return found != entries.end() && !found->second.isRevoked && found->second.token.role == caller.role &&
           !HasEnded(found->second.token);
}

/// Throws for a document that this class has not written.
TokenStore::Entries TokenStore::Read(Json const& document)
{
    Entries read;
    if (document.is_null())
    {
        return read;
    }
    for (Json const& one : document.at("tokens"))
    {
        auto const role = ZuCommon::RoleOfName(one.at("role").get_ref<std::string const&>());
        std::string const hash = one.at("sha256");
        Token token{one.at("name"),        role.value_or(ZuCommon::Role::NONE), one.at("made"),
                    TimeIn(one.at("end")), TimeIn(one.at("lastUse")),           one.at("ended")};
        CheckName(token.name);
        if (!role.has_value() || hash.size() != HASH_DIGITS || FindNamed(read, token.name) != read.end())
        {
            ZU_THROW(Zu::Status::BAD_FORMAT, "The token '%s' is damaged", token.name.c_str());
        }
        read.emplace(hash, Entry{std::move(token)});
    }
    return read;
}

Json TokenStore::DocumentOf(Entries const& entries)
{
    Json list = Json::array();
    for (auto const& [hash, entry] : entries)
    {
        list.push_back({{"name", entry.token.name},
                        {"role", ZuCommon::RoleName(entry.token.role)},
                        {"sha256", hash},
                        {"made", entry.token.madeSeconds},
                        {"end", NumberOrNull(entry.token.endSeconds)},
                        {"lastUse", NumberOrNull(entry.token.lastUseSeconds)},
                        {"ended", entry.token.hasEnded}});
    }
    return {{"tokens", std::move(list)}};
}

void TokenStore::CheckReadable() const
{
    if (!fault.empty())
    {
        ZU_THROW(Zu::Status::FAILURE, "%s", fault.c_str());
    }
}

/// Stores `changed` without the revoked tokens, and makes it the present state. If the store throws, the present state
/// stays. Uses that happen meanwhile are not lost.
void TokenStore::Store(Entries const& changed)
{
    Entries kept = changed;
    std::erase_if(kept, [](auto const& one) { return one.second.isRevoked; });
    store.Save(TOKENS_DOCUMENT, DocumentOf(kept));
    Zu::MutexLock const guard(lock);
    for (auto& [hash, entry] : kept)
    {
        if (auto const present = entries.find(hash); present != entries.end())
        {
            entry.token = present->second.token;
        }
    }
    entries = std::move(kept);
    isUsed = false;
}

TokenStore::Entries TokenStore::Copy() const
{
    Zu::MutexLock const guard(lock);
    return entries;
}

bool TokenStore::HasEnded(Token const& token) const
{
    return token.hasEnded || (token.endSeconds.has_value() && clock() >= *token.endSeconds);
}

} // namespace ZuHost
