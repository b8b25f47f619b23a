#pragma once

#include "ZuApi/Properties/Value.h"
#include "ZuApi/ValueBase.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <atomic>

namespace Zu::Properties
{

/// A number of a metrics record, which any threads may change and read at the same time. Its observers are not called.
///
/// It describes itself: by a title, a sentence without a full stop, and as a counter, which only ever grows until it begins anew, or
/// a gauge. Time is in microseconds, and the key says so ("...Usec"). No number says anything about another one.
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
    void Raise(uint64 newValue) noexcept; ///< sets it, unless it is larger already

    void CopyValues(Node const& other) override;
    void ReadValue(IValueReader& reader) override;
    void WriteValue(IValueWriter& writer) const override;
    void ValidateValue(IValueReader& reader) override;

private:
    static void BuildSchema(Node& node, Structure& schema);

    Value<std::string> kind;
    Value<std::string> title;
    std::atomic<uint64> value{0}; // relaxed: it publishes nothing
};

} // namespace Zu::Properties
