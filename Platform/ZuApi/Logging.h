#pragma once

#include "ZuApi/FunctionLabel.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <memory>

/// The one way into the log, and the sinks behind it.
///
/// Any thread may log, also under a lock of its own: no lock is held while a sink writes, and the lines of one thread keep
/// their order. A level that no sink wants costs one relaxed load.
namespace Zu::Logging
{

inline constexpr uint64 FLAG_MARK = 0x8000000000000000;  ///< set in every line
inline constexpr uint64 FLAG_USER = 0x0000000100000000;  ///< for the person at the screen
inline constexpr uint64 LEVEL_MASK = 0x00000000000000FF; ///< 0 information, 1 warning, 2 error

inline constexpr uint64 FLAGS_INFO = FLAG_MARK;
inline constexpr uint64 FLAGS_WARNING = FLAG_MARK | 1;
inline constexpr uint64 FLAGS_ERROR = FLAG_MARK | 2;
inline constexpr uint64 FLAGS_USER_INFO = FLAGS_INFO | FLAG_USER;
inline constexpr uint64 FLAGS_USER_WARNING = FLAGS_WARNING | FLAG_USER;
inline constexpr uint64 FLAGS_USER_ERROR = FLAGS_ERROR | FLAG_USER;

/// Label of the lines for the person at the screen; developer lines have the function's qualified name instead.
inline constexpr char const* USER_LABEL = "ZuControl";

/// One line as a sink sees it; valid for the call only.
struct Entry
{
    int line;
    char const* file;
    uint64 flags;
    char const* label;
    char const* text; ///< formatted
};

/// Where lines go. Called on the thread that logs, possibly on several at once and under any lock of the caller: it must
/// not call back into what logs.
class ZUAPI_API ISink
{
public:
    virtual ~ISink();

    /// Whether lines with these flags are wanted. The answer must not change while the sink is added.
    virtual bool Wants(uint64 flags) const = 0;

    virtual void Write(Entry const& entry) = 0;
};

/// Lines that begin from now on reach `sink` too, behind the sinks that are there.
ZUAPI_API void AddSink(std::shared_ptr<ISink> sink);

/// Lines that begin from now on do not reach `sink`; one that another thread has begun still may. Unknown: nothing happens.
ZUAPI_API void RemoveSink(std::shared_ptr<ISink> const& sink);

/// The bit of the kind that a line with these flags is of: a level, for one of two readers.
constexpr uint32 KindBit(uint64 flags) noexcept
{
    uint64 const level = (flags & LEVEL_MASK) < 2 ? flags & LEVEL_MASK : 2;
    return uint32{1} << (level + ((flags & FLAG_USER) != 0 ? 3 : 0));
}

/// The kinds that some sink wants, as bits. Only `AddSink` and `RemoveSink` change it.
extern ZUAPI_API std::atomic<uint32> wantedKinds;

/// Whether any sink wants a line with these flags.
inline bool IsWanted(uint64 flags) noexcept
{
    return (wantedKinds.load(std::memory_order_relaxed) & KindBit(flags)) != 0;
}

/// Writes one line: printf format, placeholders all plain or all positional. Formats only what a sink wants. Throws nothing
/// but what a sink throws.
ZUAPI_API void Zu_Debug_Log(int line, char const* file, uint64 flags, char const* label, char const* format, ...)
    ZU_PRINTF_FORMAT(5, 6);

} // namespace Zu::Logging

/// Tests the level before the arguments are evaluated.
#define ZU_LOG_LINE(flags, label, ...)                                                                                 \
    do                                                                                                                 \
    {                                                                                                                  \
        if (::Zu::Logging::IsWanted(flags))                                                                            \
        {                                                                                                              \
            ::Zu::Logging::Zu_Debug_Log(__LINE__, __FILE__, flags, label, __VA_ARGS__);                                \
        }                                                                                                              \
    } while (false)

// For the developer: plain placeholders, the function as label.
#define ZU_LOG_INFO(...) ZU_LOG_LINE(::Zu::Logging::FLAGS_INFO, ZU_FUNCTION_LABEL, __VA_ARGS__)
#define ZU_LOG_WARNING(...) ZU_LOG_LINE(::Zu::Logging::FLAGS_WARNING, ZU_FUNCTION_LABEL, __VA_ARGS__)
#define ZU_LOG_ERROR(...) ZU_LOG_LINE(::Zu::Logging::FLAGS_ERROR, ZU_FUNCTION_LABEL, __VA_ARGS__)

// For the person at the screen: positional placeholders. The user line comes first, the developer line right behind it.
#define ZU_LOG_USER_INFO(...) ZU_LOG_LINE(::Zu::Logging::FLAGS_USER_INFO, ::Zu::Logging::USER_LABEL, __VA_ARGS__)
#define ZU_LOG_USER_WARNING(...) ZU_LOG_LINE(::Zu::Logging::FLAGS_USER_WARNING, ::Zu::Logging::USER_LABEL, __VA_ARGS__)
#define ZU_LOG_USER_ERROR(...) ZU_LOG_LINE(::Zu::Logging::FLAGS_USER_ERROR, ::Zu::Logging::USER_LABEL, __VA_ARGS__)
