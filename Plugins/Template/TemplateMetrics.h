#pragma once

#include "ZuApi/Properties/Metric.h"
#include "ZuApi/Structure.h"

/// What the protocol tells of itself. Each number says by its kind and its title what it is; any thread may read it.
struct TemplateMetrics final : public Zu::Properties::Structure
{
    TemplateMetrics();
    ~TemplateMetrics() override;

    using Metric = Zu::Properties::Metric;

    Metric controlDrops{Metric::Kind::COUNTER, "Results lost on the way to clients"}; ///< every protocol has this one
    Metric datagrams{Metric::Kind::COUNTER, "Datagrams sent"};
};
