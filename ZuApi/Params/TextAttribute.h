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

/// A text that describes a parameter. It has the access of a `Zu::Properties::Value<std::string>`. The first call of
/// `Node` creates the value node; until then the attribute is one word, which refers to an interned text.
///
/// Threads: as for its parameter. In addition, readers may run concurrently with `Node` and with a `Set` that does not
/// change the text.
class ZUAPI_API TextAttribute
{
public:
    TextAttribute() noexcept = default; ///< the empty text
    ~TextAttribute();

    TextAttribute(TextAttribute const&) = delete;
    TextAttribute& operator=(TextAttribute const&) = delete;

    std::string const& Get() const noexcept;

    TextAttribute& Set(std::string const& newText);

    /// Sets an interned text.
    void Share(Properties::Internal::InternedText newText);

    /// Sets the text of `other`; both then share one interned text.
    void CopyFrom(TextAttribute const& other);

    TextAttribute& operator=(std::string const& newText)
    {
        return Set(newText);
    }

    operator std::string const&() const noexcept // usable like a value of type std::string
    {
        return Get();
    }

    bool operator==(std::string_view other) const noexcept
    {
        return Get() == other;
    }

    /// Returns the value as a node, for a schema or an observer. The node lives as long as the attribute.
    Properties::Value<std::string>& Node() const;

private:
    struct Made;

    void Keep(void* text) noexcept;

    // 0 for the empty text; the address of an interned text with the lowest bit set; or the address of the `Made`
    // object, which is owned. The store of the address publishes the object.
    mutable std::atomic<std::uintptr_t> word{0};
};

} // namespace Zu::Params
