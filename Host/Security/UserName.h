#pragma once

#include <compare>
#include <cstddef>
#include <string>
#include <string_view>

namespace ZuHost
{

/// The checked name of a user. A text of a client or of the archive becomes a `UserName` once, where the host receives
/// it.
///
/// A name has 1 to 64 bytes of UTF-8 after normalisation (NFKC). It has no control, format or invisible characters, no
/// white space but single spaces between other characters, no combining character at its head, and is not "." or "..",
/// which clients remove from paths. Names that differ only in case are the same name.
class UserName final
{
public:
    static constexpr std::size_t MAX_BYTES = 64;

    /// Throws `Zu::Status::BAD_ARGUMENT` with a sentence for any other text.
    explicit UserName(std::string_view newText);

    /// The name as it is shown.
    std::string const& Text() const;

    /// The name as it is compared.
    std::string const& Key() const;

    bool operator==(UserName const& other) const
    {
        return key == other.key;
    }

    std::strong_ordering operator<=>(UserName const& other) const
    {
        return key <=> other.key;
    }

private:
    std::string text;
    std::string key;
};

} // namespace ZuHost
