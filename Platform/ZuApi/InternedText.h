#pragma once

#include "ZuApi/TextKey.h"
#include "wApi/wExport.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace Zu::Properties::Internal
{

/// A text that is kept once in the process however many nodes bear it: keys and titles, which repeat with every record.
///
/// One word; equal texts share one immutable entry, freed with its last user, but for literals: those stay, so that finding
/// one takes no lock and nobody counts its users. Different objects may be used on any threads at once, one object as a
/// std::string may.
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

    /// Stays where it is for as long as any text equal to this one is in use.
    std::string const& Get() const noexcept;

    /// Equal texts have equal entries: one comparison of pointers.
    bool operator==(InternedText const& other) const noexcept
    {
        return entry == other.entry;
    }

    /// Gives the reference away as a word whose lowest bit is free, null for the empty text; `Attach` takes it back.
    void* Detach() noexcept
    {
        return std::exchange(entry, nullptr);
    }

    static InternedText Attach(void* detached) noexcept;

    /// The text of a detached reference, which stays detached.
    static std::string const& TextOf(void const* detached) noexcept;

    /// How many different texts are in use.
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
