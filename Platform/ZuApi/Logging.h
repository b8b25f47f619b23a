#pragma once

#include "ZuApi/FunctionLabel.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <memory>

/// The log of the process and its sinks.
///
/// Any thread may log, also under a lock of its own: no lock of the log is held while a sink writes. The lines of one
/// thread keep their order. A line of a level that no sink wants costs one relaxed load.
namespace Zu::Logging
{

inline constexpr uint64 FLAG_MARK = 0x8000000000000000;  ///< set in every line
inline constexpr uint64 FLAG_USER = 0x0000000100000000;  ///< a line for the user
inline constexpr uint64 LEVEL_MASK = 0x00000000000000FF; ///< 0 information, 1 warning, 2 error

inline constexpr uint64 FLAGS_INFO = FLAG_MARK;
inline constexpr uint64 FLAGS_WARNING = FLAG_MARK | 1;
inline constexpr uint64 FLAGS_ERROR = FLAG_MARK | 2;
inline constexpr uint64 FLAGS_USER_INFO = FLAGS_INFO | FLAG_USER;
inline constexpr uint64 FLAGS_USER_WARNING = FLAGS_WARNING | FLAG_USER;
inline constexpr uint64 FLAGS_USER_ERROR = FLAGS_ERROR | FLAG_USER;

/// The label of user lines; a developer line has the qualified name of its function instead.
inline constexpr char const* USER_LABEL = "ZuControl";

/// One line, as a sink receives it; valid during the call only.
struct Entry
{
    int line;
    char const* file;
    uint64 flags;
    char const* label;
    char const* text; ///< the formatted text
};

/// A receiver of log lines. It is called on the logging thread, possibly on several threads at once and under locks of
/// the code that logs. It must not call back into that code.
class ZUAPI_API ISink
{
public:
    virtual ~ISink();

    /// Whether the sink wants lines with these flags. After a change of the answer the sink calls `AskSinksAgain`. It must
    /// not log, add or remove sinks: the functions below call it under the lock of the sinks.
    virtual bool Wants(uint64 flags) const = 0;

    virtual void Write(Entry const& entry) = 0;
};

/// Adds `sink` after the present sinks. It receives lines that begin after this call.
ZUAPI_API void AddSink(std::shared_ptr<ISink> sink);

/// Removes `sink`. Lines that begin after this call do not reach it; lines in progress on other threads may. Does
/// nothing for a sink that was not added.
ZUAPI_API void RemoveSink(std::shared_ptr<ISink> const& sink);

/// Asks each sink again what it wants. Lines that begin after this call follow the answers.
ZUAPI_API void AskSinksAgain();

/// The bit for the kind of a line with these flags: one bit for each level of user lines and of developer lines.
constexpr uint32 KindBit(uint64 flags) noexcept
{
    uint64 const level = (flags & LEVEL_MASK) < 2 ? flags & LEVEL_MASK : 2;
    return uint32{1} << (level + ((flags & FLAG_USER) != 0 ? 3 : 0));
}

/// The kinds that at least one sink wants, as bits. Only the functions above change it.
extern ZUAPI_API std::atomic<uint32> wantedKinds;

/// Whether any sink wants a line with these flags.
inline bool IsWanted(uint64 flags) noexcept
{
    return (wantedKinds.load(std::memory_order_relaxed) & KindBit(flags)) != 0;
}

/// Writes one line. The placeholders of the printf format are all plain or all positional. Formats only if a sink wants
/// the line. Exceptions of a sink go to the caller.
ZUAPI_API void Zu_Debug_Log(int line, char const* file, uint64 flags, char const* label, char const* format, ...)
    ZU_PRINTF_FORMAT(5, 6);

} // namespace Zu::Logging

/// Tests whether the line is wanted before it evaluates the arguments.
#define ZU_LOG_LINE(flags, label, ...)                                                                                 \
    do                                                                                                                 \
    {                                                                                                                  \
        if (::Zu::Logging::IsWanted(flags))                                                                            \
        {                                                                                                              \
            ::Zu::Logging::Zu_Debug_Log(__LINE__, __FILE__, flags, label, __VA_ARGS__);                                \
        }                                                                                                              \
    } while (false)

// Developer lines: plain placeholders; the label is the function.
#define ZU_LOG_INFO(...) ZU_LOG_LINE(::Zu::Logging::FLAGS_INFO, ZU_FUNCTION_LABEL, __VA_ARGS__)
#define ZU_LOG_WARNING(...) ZU_LOG_LINE(::Zu::Logging::FLAGS_WARNING, ZU_FUNCTION_LABEL, __VA_ARGS__)
#define ZU_LOG_ERROR(...) ZU_LOG_LINE(::Zu::Logging::FLAGS_ERROR, ZU_FUNCTION_LABEL, __VA_ARGS__)

// User lines: positional placeholders. The user line comes first, the developer line directly after it.
#define ZU_LOG_USER_INFO(...) ZU_LOG_LINE(::Zu::Logging::FLAGS_USER_INFO, ::Zu::Logging::USER_LABEL, __VA_ARGS__)
#define ZU_LOG_USER_WARNING(...) ZU_LOG_LINE(::Zu::Logging::FLAGS_USER_WARNING, ::Zu::Logging::USER_LABEL, __VA_ARGS__)
#define ZU_LOG_USER_ERROR(...) ZU_LOG_LINE(::Zu::Logging::FLAGS_USER_ERROR, ::Zu::Logging::USER_LABEL, __VA_ARGS__)
