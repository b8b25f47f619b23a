#pragma once

#include "ZuVision/ZvMsg.h"
#include "wApi/wStatus.h"

#include <new>
#include <utility>

namespace ZuVision
{

/// The common body of the functions that make messages. Returns `Zu::Status::BAD_ARGUMENT` if `msg` is null and
/// `Zu::Status::FAILURE` if memory runs out.
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

/// The `wClass::destroy` of a message class.
template <typename Msg>
void DestroyMsg(wObject* object)
{
    delete static_cast<Msg*>(object);
}

} // namespace ZuVision
