#pragma once

#include "wApi/wTypes.h"

#include <map>
#include <optional>
#include <string>

namespace ZuControl
{
class IControlResourceAdaptor;
}

namespace SparkplugMqtt
{

/// The least and the largest value that an output may have.
struct ValueLimits
{
    double low = 0;
    double high = 0;

    bool operator==(ValueLimits const&) const = default;
};

/// The limits of the measurements, as the system has them in the document "/sensor/limits". It reads them again from
/// time to time. One thread at a time calls.
class SourceLimits final
{
public:
    static constexpr char const* PATH = "/sensor/limits";
    static constexpr uint64 PERIOD_USEC = 2'000'000;         ///< between two reads
    static constexpr uint64 READ_TIMEOUT_USEC = 500'000;     ///< longest wait for one read
    static constexpr char const* SOURCE_PREFIX = "profile/"; ///< of a data source; its measurement's name follows

    using BySource = std::map<std::string, ValueLimits>;

    /// Null: there are no limits. The adaptor outlives the object.
    explicit SourceLimits(ZuControl::IControlResourceAdaptor* usedResources);
    ~SourceLimits();
    SourceLimits(SourceLimits const&) = delete;
    SourceLimits& operator=(SourceLimits const&) = delete;

    /// Reads the limits if that is due; returns them if it has read them. A read that fails because another one runs, or
    /// because it takes too long, is repeated after the period. A system without the document is not asked again.
    std::optional<BySource> Look(uint64 nowUsec);

    /// The limits in such a document: those that are enabled. None for another text.
    static BySource In(std::string const& text);

private:
    ZuControl::IControlResourceAdaptor* resources; // null: there is nothing to read
    uint64 dueUsec = 0;
};

} // namespace SparkplugMqtt
