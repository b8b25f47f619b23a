#pragma once

#include "ZuApi/IValueWriter.h"

#include <nlohmann/json_fwd.hpp>

namespace Zu::Properties
{

/// Appends JSON to a text, byte for byte as the JSON library dumps it on one line, with what is no UTF-8 replaced, in a
/// fraction of its time. As a writer of values it writes each where the text ends.
class ZUAPI_API JsonTextWriter final : public IValueWriter
{
public:
    /// The text outlives this.
    explicit JsonTextWriter(std::string& writtenText);
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

    /// By the library: for what is rare and what is an art of its own, as fractions are.
    void WriteAsLibrary(nlohmann::json const& value);

private:
    std::string& text;
};

} // namespace Zu::Properties
