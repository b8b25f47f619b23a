#pragma once

#include "ZuApi/IValueIo.h"

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace Zu::Properties
{

/// Writes JSON as text, byte for byte as the JSON library dumps it on one line with invalid UTF-8 replaced, in a
/// fraction of the time. Each write appends to the text.
///
/// The caller provides the structure: `NextElement` before each element of an array, `NextMember` before each member of
/// an object.
class ZUAPI_API JsonTextWriter final : public IValueWriter
{
public:
    JsonTextWriter();
    ~JsonTextWriter() override;

    JsonTextWriter(JsonTextWriter const&) = delete;
    JsonTextWriter& operator=(JsonTextWriter const&) = delete;

    void WriteInt32(int32 value) override;
    void WriteUint32(uint32 value) override;
    void WriteUint64(uint64 value) override;
    void WriteUint16(uint16 value) override;
    void WriteBool(bool value) override;
    void WriteDouble(double value) override;
    void WriteString(std::string const& value) override;
    void BeginArray() override;
    void NextElement() override;
    void EndArray() override;

    void WriteInt64(int64 value);
    void WriteText(std::string_view value); ///< as a JSON string; `value` must not point into this writer's text

    void BeginObject();
    void NextMember(std::string_view key); ///< its value follows
    void EndObject();

    /// Writes a key with its colon. A caller that writes the same key often may keep this text as a label.
    void WriteLabel(std::string_view key);
    void NextLabelledMember(std::string_view label); ///< its value follows

    /// Appends text that is JSON already.
    void WriteJson(std::string_view json);

    /// Appends a value as the JSON library dumps it. For rare values and for values that are hard to format, such as
    /// fractions.
    void WriteAsLibrary(nlohmann::json const& value);

    /// Returns the number of bytes written so far.
    std::size_t Size() const noexcept;

    /// Returns a part of the text; valid until the next write.
    std::string_view Written(std::size_t begin, std::size_t bytes) const noexcept
    {
        return {text.data() + begin, bytes};
    }

    /// Removes the text after the first `size` bytes.
    void Cut(std::size_t size) noexcept;

    /// Returns the text. The writer is then empty.
    std::string Take();

private:
    /// Returns the place of the next `bytes` bytes; grows the text if needed.
    char* Room(std::size_t bytes)
    {
        if (text.size() - used < bytes)
        {
            Grow(bytes);
        }
        return text.data() + used;
    }

    void Grow(std::size_t bytes);
    void Put(char character);
    void Put(std::string_view written);
    void Separate(char opening);

    template <typename Integer>
    void PutInteger(Integer value);

    std::string text;     // its size is the reserved room
    std::size_t used = 0; // bytes of `text` that are written
};

} // namespace Zu::Properties
