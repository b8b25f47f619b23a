#pragma once

#include "ZuApi/Event.h"
#include "wApi/wExport.h"

#include <functional>
#include <string>

namespace ZuCommon
{

class IMetricsSource;

/// Reports metrics periodically. A reporter for several sources takes the name of the source as `Args`; a reporter for
/// one source has no `Args`.
template <typename... Args>
class IMetricsReporter
{
public:
    using ReportHandler = std::function<void(IMetricsSource const&)>;
    using CallbackId = typename Zu::Event<IMetricsSource const&>::CallbackId;

    virtual ~IMetricsReporter(); // slot order is part of the interface: append only

    /// Returns the last report, which lives as long as the reporter.
    virtual IMetricsSource const& LastReport(Args... args) = 0;

    /// Calls `handler` with each report from the next one on, on the reporter's thread. An empty function is not
    /// stored; the returned id is then not valid.
    virtual CallbackId AddReportHandler(ReportHandler handler, Args... args) = 0;

    /// Removes a handler. `args` are the arguments with which it was added.
    virtual void RemoveReportHandler(CallbackId id, Args... args) = 0;
};

template <typename... Args>
IMetricsReporter<Args...>::~IMetricsReporter() = default;

extern template class ZUPLATFORM_API IMetricsReporter<>;
extern template class ZUPLATFORM_API IMetricsReporter<std::string const&>;

} // namespace ZuCommon
