#pragma once

#include "ZuApi/TextKey.h"
#include "wApi/wExport.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace Zu::Properties::Internal
{

/// A text that the process stores once, however many nodes use it: keys and titles, which repeat in every record.
///
/// The object is one pointer. Equal texts share one immutable entry, which is freed with its last user. Entries of
/// literals are never freed, so that finding one takes no lock and its users are not counted. Threads may use different
/// objects concurrently; one object needs the same care as a std::string.
class ZUAPI_API InternedText
{
public:
    InternedText() noexcept = default; ///< the empty text
    explicit InternedText(std::string_view text);

    static InternedText Of(TextKey const& key);

    InternedText(InternedText const& other) noexcept;
    InternedText(InternedText&& other) noexcept : entry(std::exchange(other.entry, nullptr))
    {
    }

    InternedText& operator=(InternedText other) noexcept
    {
        std::swap(entry, other.entry);
        return *this;
    }

    ~InternedText();

    /// The returned string stays valid as long as any text equal to this one is in use.
    std::string const& Get() const noexcept;

    /// Compares one pointer: equal texts have the same entry.
    bool operator==(InternedText const& other) const noexcept
    {
        return entry == other.entry;
    }

    /// Releases ownership of the reference and returns it as a pointer, null for the empty text. The lowest bit of the
    /// pointer is 0. `Attach` takes it back.
    void* Detach() noexcept
    {
        return std::exchange(entry, nullptr);
    }

    static InternedText Attach(void* detached) noexcept;

    /// Returns the text of a detached reference, which stays detached.
    static std::string const& TextOf(void const* detached) noexcept;

    /// The number of different texts in use.
    static std::size_t PoolSize();

private:
    struct Entry;
    class LiteralTable;
    struct Pool;

    explicit InternedText(Entry* taken) noexcept : entry(taken)
    {
    }

    Entry* entry = nullptr;
};

} // namespace Zu::Properties::Internal
