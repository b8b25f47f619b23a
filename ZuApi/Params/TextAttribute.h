#pragma once

#include "wApi/wExport.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

namespace Zu::Properties
{
template <typename T>
class Value;
} // namespace Zu::Properties

namespace Zu::Properties::Internal
{
class InternedText;
} // namespace Zu::Properties::Internal

namespace Zu::Params
{

/// A text that describes a parameter. It reads and is written like a Zu::Properties::Value<std::string>, and becomes one
/// when its node is first asked for; until then it is one word that names a text all equal attributes share.
/// Threads: as its parameter. Asking for the node and setting the text that is there already may run beside readers.
class ZUAPI_API TextAttribute
{
public:
    TextAttribute() noexcept = default; ///< the empty text
    ~TextAttribute();

    TextAttribute(TextAttribute const&) = delete;
    TextAttribute& operator=(TextAttribute const&) = delete;

    std::string const& Get() const noexcept;

    TextAttribute& Set(std::string const& newText);

    /// Sets it to a text that is interned already.
    void Share(Properties::Internal::InternedText newText);

    /// Sets it to the other's text, which the two then share.
    void CopyFrom(TextAttribute const& other);

    TextAttribute& operator=(std::string const& newText)
    {
        return Set(newText);
    }

    operator std::string const&() const noexcept // reads like the value that it stands for
    {
        return Get();
    }

    bool operator==(std::string_view other) const noexcept
    {
        return Get() == other;
    }

    /// The value itself, for a schema or an observer. It stays for the attribute's life.
    Properties::Value<std::string>& Node() const;

private:
    struct Made;

    void Keep(void* text) noexcept;

    // Null for the empty text; a shared text with the lowest bit set; else what was made, which this publishes.
    mutable std::atomic<std::uintptr_t> word{0};
};

} // namespace Zu::Params
