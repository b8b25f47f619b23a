#pragma once

#include "ZuApi/Properties/Metric.h"
#include "ZuApi/Structure.h"

/// The metrics of the protocol. Kind and title describe each number. Any thread may read them.
struct TemplateMetrics final : public Zu::Properties::Structure
{
    TemplateMetrics();
    ~TemplateMetrics() override;

    using Metric = Zu::Properties::Metric;

    Metric controlDrops{Metric::Kind::COUNTER, "Results lost on the way to clients"}; ///< required of each protocol
    Metric datagrams{Metric::Kind::COUNTER, "Datagrams sent"};
};
