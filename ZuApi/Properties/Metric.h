#pragma once

#include "ZuApi/Properties/Value.h"
#include "ZuApi/ValueBase.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <atomic>

namespace Zu::Properties
{

/// A number in a metrics record, which any threads may change and read at the same time. It does not call observers.
///
/// Its schema has a title, which is a sentence without a full stop, and a kind: a counter, which only grows until it is
/// reset, or a gauge. Times are in microseconds, and their keys end in "Usec". Several numbers are not read or changed
/// as a unit.
class ZUAPI_API Metric final : public Internal::ValueBase
{
public:
    enum class Kind
    {
        COUNTER,
        GAUGE
    };

    /// `newTitle` is a literal.
    Metric(Kind newKind, char const* newTitle);
    ~Metric() override;

    uint64 Get() const noexcept;
    void Set(uint64 newValue) noexcept;
    void Add(uint64 amount = 1) noexcept;
    void Raise(uint64 newValue) noexcept; ///< sets the number if `newValue` is larger

    void CopyValues(Node const& other) override;
    void ReadValue(IValueReader& reader) override;
    void WriteValue(IValueWriter& writer) const override;
    void ValidateValue(IValueReader& reader) override;

private:
    static void BuildSchema(Node& node, Structure& schema);

    Value<std::string> kind;
    Value<std::string> title;
    std::atomic<uint64> value{0}; // relaxed access: it publishes nothing
};

} // namespace Zu::Properties
