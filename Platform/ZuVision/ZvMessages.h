#pragma once

#include "wApi/wExport.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

#include <new>
#include <utility>

struct wStamp;

namespace ZuVision
{

/// Base of all messages in results. Messages are immutable counted objects. Handles are passed as `void*`;
/// `wObject_Is(msg, ZvMsg_Class)` and the like test for a class, derived classes included.
struct ZUPLATFORM_API ZvMsg : wObject
{
    /// The stamp, a member of the derived message; null for no stamp.
    wStamp const* const stamp;

protected:
    ZvMsg(wClass const& msgClass, wStamp const* ownStamp) noexcept;
    ~ZvMsg() = default;
};

/// The class of the base; every message has a class derived from it.
extern ZUPLATFORM_API wClass const ZvMsg_Class;

/// Returns the message's stamp, borrowed; null if the message has none at this index or `msg` is no message.
inline wStamp const* ZvMsg_StampAt(void const* msg, uint64 index) noexcept
{
    return index == 0 && wObject_Is(msg, ZvMsg_Class) ? static_cast<ZvMsg const*>(msg)->stamp : nullptr;
}

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

/// Takes the place of a missing result.
struct ZvNullMsg;

extern ZUPLATFORM_API wClass const ZvNullMsg_Class;

/// Makes a message with one reference. The allocator is ignored. Returns `Zu::Status::BAD_ARGUMENT` if `msg` is null.
ZUPLATFORM_API wStatus ZvNullMsg_Construct(ZvNullMsg** msg, void* allocator);

/// A message with a time and an encoder position of its own, which are finer than those of its stamp.
struct ZvDataMsg;

extern ZUPLATFORM_API wClass const ZvDataMsg_Class;

/// Makes a message with one reference. It copies the stamp; null for no stamp. The allocator is ignored. Returns
/// `Zu::Status::BAD_ARGUMENT` if `msg` is null.
ZUPLATFORM_API wStatus ZvDataMsg_Construct(ZvDataMsg** msg, wStamp const* stamp, uint64 time, int64 encoder,
                                           void* allocator);

/// Returns the time; all ones, for no reading, if `msg` is no data message.
ZUPLATFORM_API uint64 ZvDataMsg_Time(void const* msg) noexcept;

/// Returns the encoder position; the lowest value, for no reading, if `msg` is no data message.
ZUPLATFORM_API int64 ZvDataMsg_Encoder(void const* msg) noexcept;

/// A message that contains several messages, in order.
struct ZvArrayMsg;

extern ZUPLATFORM_API wClass const ZvArrayMsg_Class;

/// Makes a message with one reference. It adds a reference to each of the `count` elements, which may be null. The
/// allocator is ignored. Returns `Zu::Status::BAD_ARGUMENT` if `msg` is null, or if `elements` is null and `count` is
/// not 0.
ZUPLATFORM_API wStatus ZvArrayMsg_Construct(ZvArrayMsg** msg, void* const* elements, uint64 count, void* allocator);

/// Returns the number of elements; 0 if `msg` is no array message.
ZUPLATFORM_API uint64 ZvArrayMsg_Count(void const* msg) noexcept;

/// Returns the element, borrowed from the message; null for an index out of range.
ZUPLATFORM_API void* ZvArrayMsg_At(void const* msg, uint64 index) noexcept;

/// The value of a measurement and the decision on it.
struct ZvMeasurementMsg;

extern ZUPLATFORM_API wClass const ZvMeasurementMsg_Class;

/// The value of a measurement that failed.
inline constexpr double MISSING_MEASUREMENT = -1.7976931348623157e308;

/// Makes a message with one reference. `decision` is 1 for a value within its limits and 0 for a value outside. The
/// allocator is ignored. Returns `Zu::Status::BAD_ARGUMENT` if `msg` is null.
ZUPLATFORM_API wStatus ZvMeasurementMsg_Construct(ZvMeasurementMsg** msg, double value, uint8 decision,
                                                  void* allocator);

/// Returns the value; `MISSING_MEASUREMENT` if `msg` is no measurement message.
ZUPLATFORM_API double ZvMeasurementMsg_Value(void const* msg) noexcept;

/// Returns the decision; 0 if `msg` is no measurement message.
ZUPLATFORM_API uint8 ZvMeasurementMsg_Decision(void const* msg) noexcept;

/// The stamp of a frame. Time and encoder position of the message are those of the stamp.
struct ZvStampMsg;

extern ZUPLATFORM_API wClass const ZvStampMsg_Class;

/// Makes a message with one reference and a copy of the stamp. The allocator is ignored. Returns
/// `Zu::Status::BAD_ARGUMENT` if `msg` is null.
ZUPLATFORM_API wStatus ZvStampMsg_Construct(ZvStampMsg** msg, wStamp const& stamp, void* allocator);

} // namespace ZuVision
