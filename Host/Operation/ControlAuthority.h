#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <optional>
#include <string>

namespace ZuHost
{

/// Whether REST clients may run the sensor. The numbers are those of documents.
enum class RestAuthority : int32
{
    ALWAYS = 0,
    WHEN_IDLE = 1, ///< only while no protocol has sent a command for a time
    NEVER = 2
};

/// Decides whether REST clients may run the sensor, beside the protocols, which always may. All operations are
/// thread-safe. Times are moments of `wTime_NowUsec`.
class ControlAuthority final
{
public:
    static constexpr uint32 DEFAULT_IDLE_SECONDS = 10;
    static constexpr uint32 LONGEST_IDLE_SECONDS = 3600;

    struct Settings
    {
        RestAuthority rest = RestAuthority::ALWAYS;
        uint32 idleSeconds = DEFAULT_IDLE_SECONDS; ///< for WHEN_IDLE

        bool operator==(Settings const&) const = default;
    };

    struct State
    {
        Settings settings;
        std::string lastProtocol; ///< that has sent a command; empty if none has
        uint64 agoUsec = 0;       ///< since that command
        bool mayCommand = true;   ///< a REST client may
        uint64 waitUsec = 0;      ///< WHEN_IDLE: until a REST client may, if no further command comes
    };

    ControlAuthority();
    ~ControlAuthority();

    ControlAuthority(ControlAuthority const&) = delete;
    ControlAuthority& operator=(ControlAuthority const&) = delete;

    void Set(Settings const& newSettings);
    Settings Get() const;

    /// Notes a command of a protocol. An earlier one than that noted last changes nothing.
    void NoteCommand(std::string const& protocol, uint64 usec);

    State At(uint64 nowUsec) const;

    /// Throws `Zu::Status::WRONG_STATE` with a sentence if a REST client may not run the sensor.
    void Check(uint64 nowUsec) const;

private:
    mutable Zu::Mutex lock; // a leaf
    Settings settings ZU_GUARDED_BY(lock);
    std::string lastProtocol ZU_GUARDED_BY(lock);
    uint64 lastUsec ZU_GUARDED_BY(lock) = 0;
};

} // namespace ZuHost
