#pragma once

#include "ZuApi/Properties/Metric.h"
#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"

#include <string>

namespace ModbusTcp
{

/// The refused requests by exception code.
///
/// The schema names the keys of the members under "label", so that a scraper shows one series with a label instead of
/// several series.
/// several.
struct ExceptionMetrics final : public Zu::Properties::Structure
{
    ExceptionMetrics();
    ~ExceptionMetrics() override;

    ExceptionMetrics(ExceptionMetrics const&) = delete;
    ExceptionMetrics& operator=(ExceptionMetrics const&) = delete;

    using Metric = Zu::Properties::Metric;
    static constexpr char const* TITLE = "Requests refused, by the code of the exception";

    Metric illegalFunctions{Metric::Kind::COUNTER, TITLE};
    Metric illegalAddresses{Metric::Kind::COUNTER, TITLE};
    Metric illegalValues{Metric::Kind::COUNTER, TITLE};
    Metric busyRefusals{Metric::Kind::COUNTER, TITLE};

private:
    Zu::Properties::Value<std::string> label{"code"};
};

} // namespace ModbusTcp
