#pragma once

#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "wApi/wTypes.h"

/// What the protocol tells of itself.
struct TemplateMetrics final : public Zu::Properties::Structure
{
    TemplateMetrics();
    ~TemplateMetrics() override;

    Zu::Properties::Value<uint64> controlDrops; ///< results that were lost: every protocol has this one
    Zu::Properties::Value<uint64> datagrams;
};
