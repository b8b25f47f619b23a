#pragma once

#include "ZuApi/Event.h"
#include "wApi/wExport.h"

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace Zu::Properties
{
class Structure;
}

namespace ZuCommon
{

/// An object with a metrics record that others may read.
class ZUPLATFORM_API IMetricsSource
{
public:
    virtual ~IMetricsSource(); // slot order is part of the plug-in interface: append only

    /// Returns the record as of its last update. The source owns the record.
    virtual Zu::Properties::Structure const& GetMetrics() const = 0;
};

/// An object that owns a metrics record and keeps it up to date.
class ZUPLATFORM_API IMetricsKeeper
{
public:
    virtual ~IMetricsKeeper(); // slot order is part of the plug-in interface: append only

    /// Updates the record and returns it. The keeper owns the record.
    ///
    /// For a protocol, a timer thread calls it four times a second; the calls for one keeper do not overlap. It must
    /// not block: the updates of other keepers wait for it. An exception is logged, and the keepers after this one miss
    /// the update.
    virtual Zu::Properties::Structure& UpdateMetrics() = 0;

    /// Resets the counters.
    virtual void ResetMetrics() = 0;
};

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

/// Converts a metrics record to JSON. All operations are static; the class has no state.
class ZUPLATFORM_API MetricsJsonSerializer
{
public:
    /// Returns the present values of the record.
    static nlohmann::json Serialize(IMetricsSource const& source);

    /// Returns the schema of the record.
    static nlohmann::json SerializeSchema(IMetricsSource const& source);
};

} // namespace ZuCommon
