#pragma once

#include "ZuApi/Event.h"
#include "wApi/wExport.h"

#include <functional>
#include <string>

namespace ZuCommon
{

class IMetricsSource;

/// Who reports metrics at intervals. `Args` say whose, when the reporter speaks for several: none, or one name.
template <typename... Args>
class IMetricsReporter
{
public:
    using ReportHandler = std::function<void(IMetricsSource const&)>;
    using CallbackId = typename Zu::Event<IMetricsSource const&>::CallbackId;

    virtual ~IMetricsReporter(); // first of the slots that others call through: never move one

    /// The last report. It lives as long as the reporter.
    virtual IMetricsSource const& LastReport(Args... args) = 0;

    /// From the next report on `handler` gets each one, on the reporter's thread. An empty function is not stored and gives
    /// an id that is not valid.
    virtual CallbackId AddReportHandler(ReportHandler handler, Args... args) = 0;

    /// `args` are those that the handler was added with.
    virtual void RemoveReportHandler(CallbackId id, Args... args) = 0;
};

template <typename... Args>
IMetricsReporter<Args...>::~IMetricsReporter() = default;

extern template class ZUPLATFORM_API IMetricsReporter<>;
extern template class ZUPLATFORM_API IMetricsReporter<std::string const&>;

} // namespace ZuCommon
