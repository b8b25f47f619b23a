#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "wApi/wTypes.h"

#include <string>

/// What a user sets. Each member shows in the protocol's document and its schema, and is kept with the job.
struct TemplateParams final : public Zu::Params::Group
{
    TemplateParams();
    ~TemplateParams() override;

    void SetDefaults();

    Zu::Params::Value<std::string> address; ///< of the receiver, IPv4, as a number
    Zu::Params::Value<uint16> port;         ///< of the receiver, from 1
};
