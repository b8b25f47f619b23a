#pragma once

#include "wApi/wTypes.h"

namespace ZuHost
{

/// Who is told by `IoLoop` what happens to a descriptor.
class IIoUser
{
public:
    virtual ~IIoUser();

    /// Something has happened: `events` as epoll has them.
    virtual void OnReady(uint32 events) = 0;
};

} // namespace ZuHost
