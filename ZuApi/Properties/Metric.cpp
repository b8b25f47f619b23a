#include "ZuApi/Properties/Metric.h"

#include "ZuApi/IValueIo.h"
#include "ZuApi/NodeType.h"

namespace Zu::Properties
{

Metric::Metric(Kind newKind, char const* newTitle)
    : ValueBase(&Metric::BuildSchema), kind(newKind == Kind::COUNTER ? "counter" : "gauge"), title(newTitle)
{
}

Metric::~Metric() = default;

uint64 Metric::Get() const noexcept
{
    return value.load(std::memory_order_relaxed);
}

void Metric::Set(uint64 newValue) noexcept
{
    value.store(newValue, std::memory_order_relaxed);
}

void Metric::Add(uint64 amount) noexcept
{
    value.fetch_add(amount, std::memory_order_relaxed);
}

void Metric::Raise(uint64 newValue) noexcept
{
    uint64 present = Get();
    while (present < newValue && !value.compare_exchange_weak(present, newValue, std::memory_order_relaxed))
    {
    }
}

void Metric::CopyValues(Node const& other)
{
    Set(dynamic_cast<Metric const&>(other).Get());
}

void Metric::ReadValue(IValueReader& reader)
{
    Set(reader.ReadUint64());
}

void Metric::WriteValue(IValueWriter& writer) const
{
    writer.WriteUint64(Get());
}

void Metric::ValidateValue(IValueReader& reader)
{
    reader.ReadUint64(); // throws if the value is no number or does not fit
}

void Metric::BuildSchema(Node& node, Structure& schema)
{
    auto& metric = static_cast<Metric&>(node);
    schema.Register("type", Internal::NodeType::Shared(Internal::NodeType::Kind::INTEGER));
    schema.Register("kind", metric.kind);
    schema.Register("title", metric.title);
}

} // namespace Zu::Properties
