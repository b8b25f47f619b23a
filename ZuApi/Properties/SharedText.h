#pragma once

#include "ZuApi/ValueBase.h"
#include "wApi/wExport.h"
#include "wApi/wMutex.h"

#include <string>

namespace Zu::Properties
{

/// A text in a metrics record, which any threads may change and read at the same time. It does not call observers.
class ZUAPI_API SharedText final : public Internal::ValueBase
{
public:
    SharedText();
    ~SharedText() override;

    std::string Get() const;
    void Set(std::string newText);

    void CopyValues(Node const& other) override;
    void ReadValue(IValueReader& reader) override;
    void WriteValue(IValueWriter& writer) const override;
    void ValidateValue(IValueReader& reader) override;

private:
    static void BuildSchema(Node& node, Structure& schema);

    mutable Zu::Mutex lock; // a leaf: no other lock is taken under it
    std::string text ZU_GUARDED_BY(lock);
};

} // namespace Zu::Properties
