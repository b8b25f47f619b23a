#include "Host/Security/PasswordHasher.h"

#include "Host/Security/Randomness.h"
#include "ZuApi/Exception.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <sodium.h>

namespace ZuHost
{

namespace
{

constexpr int ALGORITHM = crypto_pwhash_ALG_ARGON2ID13;
constexpr std::size_t HASH_BYTES = 32;
constexpr std::size_t KIBIBYTE = 1024;
constexpr char const* NO_MEMORY = "The host has not enough memory to check a password. Try again later.";

std::string HashOf(std::string const& password, PasswordHasher::Cost const& cost)
{
    Randomness::Prepare();
    std::array<char, crypto_pwhash_STRBYTES> text{};
    int const outcome =
        crypto_pwhash_str_alg(text.data(), password.data(), password.size(), cost.passes, cost.memoryBytes, ALGORITHM);
    if (outcome != 0)
    {
        ZU_THROW(Zu::Status::BUSY, "%s", NO_MEMORY);
    }
    return text.data();
}

/// Takes a number and the character after it from the head of `text`.
std::optional<uint64> TakeNumber(std::string_view& text, char end)
{
    uint64 number = 0;
    auto const result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc{} || result.ptr == text.data() + text.size() || *result.ptr != end)
    {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()) + 1);
    return number;
}

bool TakeText(std::string_view& text, std::string_view expected)
{
    bool const isThere = text.starts_with(expected);
    text.remove_prefix(isThere ? expected.size() : 0);
    return isThere;
}

template <std::size_t SIZE>
bool Decode(std::string_view text, std::array<unsigned char, SIZE>& bytes)
{
    std::size_t size = 0;
    int const outcome = sodium_base642bin(bytes.data(), bytes.size(), text.data(), text.size(), nullptr, &size, nullptr,
                                          sodium_base64_VARIANT_ORIGINAL_NO_PADDING);
    return outcome == 0 && size == SIZE;
}

} // namespace

/// A hash in the form of the library, "$argon2id$v=19$m=65536,t=2,p=1$SALT$HASH".
struct PasswordHasher::Parts
{
    Cost cost;
    std::array<unsigned char, crypto_pwhash_SALTBYTES> salt{};
    std::array<unsigned char, HASH_BYTES> hash{};
};

/// The right to compute a hash, for the lifetime of the object.
class PasswordHasher::Turn final
{
public:
    explicit Turn(PasswordHasher& newOwner) : owner(newOwner)
    {
        Zu::MutexLock const guard(owner.lock);
        if (owner.waiting >= MAX_WAITING)
        {
            ZU_THROW(Zu::Status::BUSY, "Too many passwords are being checked. Try again in a moment.");
        }
        ++owner.waiting;
        owner.freed.Wait(owner.lock, [this]() ZU_REQUIRES(owner.lock) { return !owner.isBusy; });
        --owner.waiting;
        owner.isBusy = true;
    }

    ~Turn()
    {
        {
            Zu::MutexLock const guard(owner.lock);
            owner.isBusy = false;
        }
        owner.freed.NotifyAll();
    }

    Turn(Turn const&) = delete;
    Turn& operator=(Turn const&) = delete;

private:
    PasswordHasher& owner;
};

PasswordHasher::PasswordHasher() : PasswordHasher(Cost())
{
}

PasswordHasher::PasswordHasher(Cost newCost) : cost(newCost), decoy(MakeDecoy(newCost))
{
}

PasswordHasher::~PasswordHasher() = default;

/// Nothing if the text is no hash of this kind.
std::optional<PasswordHasher::Parts> PasswordHasher::PartsOf(std::string_view text)
{
    Parts parts;
    bool const isOurs = TakeText(text, "$argon2id$v=19$m=");
    auto const kibibytes = TakeNumber(text, ',');
    bool const hasPasses = TakeText(text, "t=");
    auto const passes = TakeNumber(text, ',');
    bool const hasOneLane = TakeText(text, "p=1$");
    std::size_t const end = std::min(text.find('$'), text.size());
    bool const isWhole = isOurs && kibibytes.value_or(UINT64_MAX) <= UINT32_MAX && hasPasses && passes.has_value() &&
                         hasOneLane && Decode(text.substr(0, end), parts.salt) &&
                         Decode(text.substr(std::min(end + 1, text.size())), parts.hash);
    if (!isWhole)
    {
        return std::nullopt;
    }
    parts.cost = {*kibibytes * KIBIBYTE, *passes};
    return parts;
}

/// Returns a hash that belongs to no password that a person could find.
std::unique_ptr<PasswordHasher::Parts> PasswordHasher::MakeDecoy(Cost const& cost)
{
    Randomness::Prepare();
    auto parts = std::make_unique<Parts>();
    parts->cost = cost;
    randombytes_buf(parts->salt.data(), parts->salt.size());
    randombytes_buf(parts->hash.data(), parts->hash.size());
    return parts;
}

std::string PasswordHasher::Hash(std::string const& password)
{
    Turn const turn(*this);
    return HashOf(password, cost);
}

bool PasswordHasher::Verify(std::string const& hash, std::string const& password)
{
    Turn const turn(*this);
    Parts const parts = PartsOf(hash).value_or(*decoy);
    std::array<unsigned char, HASH_BYTES> found{};
    // Not by the library's own comparison, which takes a lack of memory for a wrong password.
    int const outcome = crypto_pwhash(found.data(), found.size(), password.data(), password.size(), parts.salt.data(),
                                      parts.cost.passes, parts.cost.memoryBytes, ALGORITHM);
    if (outcome != 0)
    {
        ZU_THROW(Zu::Status::BUSY, "%s", NO_MEMORY);
    }
    return sodium_memcmp(found.data(), parts.hash.data(), found.size()) == 0;
}

bool PasswordHasher::IsHash(std::string const& text)
{
    return PartsOf(text).has_value();
}

} // namespace ZuHost
