#include "Ctl/Backup/SealedFile.h"

#include "Ctl/Outcome/Failure.h"

#include <sodium.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace ZuCtl
{

namespace
{

// The file: magic, version, salt, header of the stream, then parts. Each part is encrypted by itself, and the last one is
// marked, so that a cut shows. All bytes before the parts are authenticated with the first part.
constexpr std::string_view MAGIC = "ZuControl backup ";
constexpr char VERSION = '1';
constexpr std::size_t SALT_AT = MAGIC.size() + 1;
constexpr std::size_t STREAM_AT = SALT_AT + crypto_pwhash_SALTBYTES;
constexpr std::size_t PARTS_AT = STREAM_AT + crypto_secretstream_xchacha20poly1305_HEADERBYTES;
constexpr std::size_t PART_BYTES = 64u * 1024u;
constexpr std::size_t OVERHEAD = crypto_secretstream_xchacha20poly1305_ABYTES;

// Fixed, so that a hostile file cannot ask for more memory. Another cost is another version of the file.
constexpr unsigned long long KEY_PASSES = 4;
constexpr std::size_t KEY_MEMORY_BYTES = 64u * 1024u * 1024u;

unsigned char* Bytes(std::string& text, std::size_t at = 0)
{
    return reinterpret_cast<unsigned char*>(text.data()) + at;
}

unsigned char const* Bytes(std::string_view text, std::size_t at = 0)
{
    return reinterpret_cast<unsigned char const*>(text.data()) + at;
}

[[noreturn]] void RefuseBackup(char const* reason)
{
    throw Failure(ExitStatus::LOCAL_FILE, reason);
}

/// A key in memory, which is wiped at the end.
class Key final
{
public:
    Key(std::string const& passphrase, unsigned char const* salt)
    {
        if (crypto_pwhash(bytes.data(), bytes.size(), passphrase.data(), passphrase.size(), salt, KEY_PASSES,
                          KEY_MEMORY_BYTES, crypto_pwhash_ALG_ARGON2ID13) != 0)
        {
            RefuseBackup("There is no memory for the key of the backup");
        }
    }
    ~Key()
    {
        sodium_memzero(bytes.data(), bytes.size());
    }
    Key(Key const&) = delete;
    Key& operator=(Key const&) = delete;

    unsigned char const* Data() const noexcept
    {
        return bytes.data();
    }

private:
    std::array<unsigned char, crypto_secretstream_xchacha20poly1305_KEYBYTES> bytes{};
};

} // namespace

std::string Seal(std::string const& content, std::string const& passphrase)
{
    std::string sealed = std::string(MAGIC) + VERSION;
    sealed.resize(PARTS_AT);
    randombytes_buf(Bytes(sealed, SALT_AT), crypto_pwhash_SALTBYTES);
    Key const key(passphrase, Bytes(sealed, SALT_AT));
    crypto_secretstream_xchacha20poly1305_state state;
    crypto_secretstream_xchacha20poly1305_init_push(&state, Bytes(sealed, STREAM_AT), key.Data());

    std::string head = sealed;
    std::size_t at = 0;
    bool isLast = false;
    while (!isLast)
    {
        std::size_t const size = std::min(PART_BYTES, content.size() - at);
        isLast = at + size == content.size();
        std::size_t const end = sealed.size();
        sealed.resize(end + size + OVERHEAD);
        crypto_secretstream_xchacha20poly1305_push(&state, Bytes(sealed, end), nullptr,
                                                   Bytes(std::string_view(content), at), size, Bytes(head), head.size(),
                                                   isLast ? crypto_secretstream_xchacha20poly1305_TAG_FINAL
                                                          : crypto_secretstream_xchacha20poly1305_TAG_MESSAGE);
        head.clear();
        at += size;
    }
    return sealed;
}

std::string Unseal(std::string const& sealed, std::string const& passphrase)
{
    if (!sealed.starts_with(MAGIC) || sealed.size() < PARTS_AT + OVERHEAD)
    {
        RefuseBackup("The file is no backup of a sensor, or was cut");
    }
    if (sealed[MAGIC.size()] != VERSION)
    {
        RefuseBackup("The backup was made by a newer version of this program");
    }
    Key const key(passphrase, Bytes(std::string_view(sealed), SALT_AT));
    crypto_secretstream_xchacha20poly1305_state state;
    crypto_secretstream_xchacha20poly1305_init_pull(&state, Bytes(std::string_view(sealed), STREAM_AT), key.Data());

    std::string content;
    std::string_view head = std::string_view(sealed).substr(0, PARTS_AT);
    unsigned char tag = 0;
    std::size_t at = PARTS_AT;
    while (at < sealed.size() && tag != crypto_secretstream_xchacha20poly1305_TAG_FINAL)
    {
        std::size_t const size = std::min(PART_BYTES + OVERHEAD, sealed.size() - at);
        std::size_t const end = content.size();
        content.resize(end + (size < OVERHEAD ? 0 : size - OVERHEAD));
        if (crypto_secretstream_xchacha20poly1305_pull(&state, Bytes(content, end), nullptr, &tag,
                                                       Bytes(std::string_view(sealed), at), size, Bytes(head),
                                                       head.size()) != 0)
        {
            RefuseBackup(at == PARTS_AT ? "The passphrase is wrong, or the backup was changed"
                                        : "The backup was changed or cut");
        }
        head = {};
        at += size;
    }
    if (tag != crypto_secretstream_xchacha20poly1305_TAG_FINAL || at != sealed.size())
    {
        RefuseBackup("The backup was changed or cut");
    }
    return content;
}

} // namespace ZuCtl
