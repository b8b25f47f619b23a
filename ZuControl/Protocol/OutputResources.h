#pragma once

#include "ZuControl/Protocol/ControlResourceBase.h"
#include "ZuControl/Protocol/OutputProperties.h"
#include "ZuRest/IUpdatableResource.h"
#include "wApi/wLock.h"
#include "wApi/wMutex.h"

#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace ZuControl::Protocol
{

/// One kind of output under `/controls/hardware/:device`: a single record that all devices and ports show and change.
/// The record is kept in memory alone; it is not sent to the sensor.
///
/// A change is notified with the device and the port of the request that has made it, also while a job is loaded, since
/// the record belongs to no job.
class ZUCONTROL_INTERNAL_API OutputResourceBase : public ControlResourceBase, public ZuRest::IUpdatableResource
{
public:
    ~OutputResourceBase() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    /// A refused document changes nothing. A request without a device or a port throws std::out_of_range after it has
    /// changed the record.
    void UpdateDocument(ZuRest::RequestInfo const& request, nlohmann::json const& document) override;

    bool IsUpdatable() const noexcept override
    {
        return true;
    }

protected:
    /// `newRoute` is a literal with the keys "device" and "port".
    OutputResourceBase(IControlManager& usedManager, char const* newRoute);

    virtual CommonControlProps& Record() ZU_REQUIRES(recordLock) = 0;

    /// Whether the record differs from that of the last notification, in the members that clients are notified of. The
    /// present record then counts as notified.
    virtual bool TakeChange() ZU_REQUIRES(recordLock) = 0;

    // A leaf. Guards the record and its last notified state, in the derived class. No callback runs under it, since a
    // handler may read the record.
    wLock recordLock;

private:
    using ChangeCallback = std::function<void(std::string const& device, std::string const& port)>;

    void OutputChanged(std::string const& device, std::string const& port);

    char const* const route;
    std::vector<ChangeCallback> changeCallbacks; // does not change after construction
};

/// What distinguishes the kinds of output: the route, and the members of the record that are notified when they change.
template <typename Properties>
struct OutputKind;

template <>
struct OutputKind<AnalogOutputProperties>
{
    using Properties = AnalogOutputProperties;

    static constexpr char ROUTE[] = "/controls/hardware/:device/analog/:port";
    static constexpr std::tuple NOTIFIED{
        &Properties::enabled,      &Properties::signalEvent,    &Properties::scheduleEnabled, &Properties::currentMin,
        &Properties::currentMax,   &Properties::invalidEnabled, &Properties::currentInvalid,  &Properties::dataScaleMin,
        &Properties::dataScaleMax, &Properties::delay,          &Properties::delayDomain}; // all
};

template <>
struct OutputKind<DigitalOutputProperties>
{
    using Properties = DigitalOutputProperties;

    static constexpr char ROUTE[] = "/controls/hardware/:device/digital/:port";
    static constexpr std::tuple NOTIFIED{
        &Properties::enabled,         &Properties::signalEvent, &Properties::signalType,
        &Properties::scheduleEnabled, &Properties::pulseWidth,  &Properties::passMode,
        &Properties::delay,           &Properties::delayDomain, &Properties::inverted}; // all but "standardOutputs"
};

template <>
struct OutputKind<MarletOutputProperties>
{
    using Properties = MarletOutputProperties;

    static constexpr char ROUTE[] = "/controls/hardware/:device/marlet/:port";
    static constexpr std::tuple NOTIFIED{&Properties::enabled, &Properties::rate,    &Properties::format,
                                         &Properties::dataMin, &Properties::dataMax, &Properties::delay}; // all
};

template <>
struct OutputKind<SerialOutputProperties>
{
    using Properties = SerialOutputProperties;

    static constexpr char ROUTE[] = "/controls/hardware/:device/serial/:port";
    static constexpr std::tuple NOTIFIED{&Properties::enabled, &Properties::rate}; // not "format", "standardOutputs"
};

/// The values of the members that are notified.
template <typename Properties>
auto NotifiedOf(Properties const& properties)
{
    return std::apply([&properties](auto... member) { return std::tuple((properties.*member).Get()...); },
                      OutputKind<Properties>::NOTIFIED);
}

/// The resource of one kind of output.
template <typename Properties>
class ZUCONTROL_INTERNAL_API OutputResource final : public OutputResourceBase
{
public:
    explicit OutputResource(IControlManager& usedManager);
    ~OutputResource() override;

protected:
    CommonControlProps& Record() override ZU_REQUIRES(recordLock);
    bool TakeChange() override ZU_REQUIRES(recordLock);

private:
    using Notified = decltype(NotifiedOf(std::declval<Properties const&>()));

    Properties record ZU_GUARDED_BY(recordLock);
    Notified told ZU_GUARDED_BY(recordLock){}; // as of the last notification; all zero before the first
};

extern template class OutputResource<AnalogOutputProperties>;
extern template class OutputResource<DigitalOutputProperties>;
extern template class OutputResource<MarletOutputProperties>;
extern template class OutputResource<SerialOutputProperties>;

using AnalogOutputResource = OutputResource<AnalogOutputProperties>;
using DigitalOutputResource = OutputResource<DigitalOutputProperties>;
using MarletOutputResource = OutputResource<MarletOutputProperties>; ///< the serial output over the link to the sensor
using SerialOutputResource = OutputResource<SerialOutputProperties>;

} // namespace ZuControl::Protocol
