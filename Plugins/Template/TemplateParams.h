#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wTypes.h"

#include <string>

/// The settings of the protocol. Each member appears in the protocol's document and schema, and is saved with the job.
struct TemplateParams final : public Zu::Params::Group
{
    TemplateParams();
    ~TemplateParams() override;

    void SetDefaults();

    Zu::Params::Value<std::string> address; ///< IPv4 address of the receiver
    Zu::Params::Value<uint16> port;         ///< of the receiver, 1 or more
};
