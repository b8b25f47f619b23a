#pragma once

#include "ZuVision/ZvMsg.h"
#include "wApi/wStatus.h"

#include <new>
#include <utility>

namespace ZuVision
{

/// What the constructing functions of all messages have in common.
template <typename Msg, typename... Args>
wStatus ConstructMsg(Msg** msg, Args&&... args)
{
    if (msg == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    try
    {
        *msg = new Msg(std::forward<Args>(args)...);
        return Zu::Status::SUCCESS;
    }
    catch (std::bad_alloc const&)
    {
        return Zu::Status::FAILURE;
    }
}

/// The `destroy` of a message class.
template <typename Msg>
void DestroyMsg(wObject* object)
{
    delete static_cast<Msg*>(object);
}

} // namespace ZuVision
