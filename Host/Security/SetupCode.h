#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTime.h"

#include <filesystem>
#include <functional>
#include <string>

namespace ZuHost
{

/// The one-time code with which the first administrator is made, or a new one when every password is lost.
///
/// The code has 80 random bits. It is shown to the person at the machine and kept only in memory: it ends when it is
/// used, after an hour, and with the host. All operations are thread-safe.
class SetupCode final
{
public:
    static constexpr uint64 VALID_USEC = 3600'000'000ULL;
    static constexpr char const* FILE_NAME = "first-administrator.code";

    /// A moment in microseconds, as `wTime_NowUsec`.
    using Clock = std::function<uint64()>;

    /// Writes a text to the terminal of the person who has started the host. Returns false if there is none.
    using Terminal = std::function<bool(std::string const& text)>;

    /// The terminal of this process: standard output, or else the controlling terminal while the host runs in its
    /// foreground.
    static bool WriteToTerminal(std::string const& text);

    /// Without a terminal the code goes into a file in `newFolder`.
    explicit SetupCode(std::filesystem::path const& newFolder, Terminal newTerminal = WriteToTerminal,
                       Clock newClock = wTime_NowUsec);
    ~SetupCode(); ///< removes the file

    SetupCode(SetupCode const&) = delete;
    SetupCode& operator=(SetupCode const&) = delete;

    /// Makes a code and shows it on the terminal. If there is none, it writes a file that only its owner can read, and
    /// names it in the log. The code itself is never logged. Throws `Zu::Status::FAILURE` with a sentence if the file
    /// cannot be written. One thread calls it, once.
    void Offer();

    /// Whether there is a code that has not ended.
    bool IsOffered() const;

    /// Whether the text is the code; blanks, hyphens and case do not matter.
    bool Matches(std::string const& text) const;

    /// Ends the code and removes the file.
    void Spend() noexcept;

private:
    void WriteFile(std::string const& code) const;

    std::filesystem::path const file;
    Terminal const terminal;
    Clock const clock;

    mutable Zu::Mutex lock;                      // a leaf
    std::string fingerprint ZU_GUARDED_BY(lock); // empty: no code
    uint64 endUsec ZU_GUARDED_BY(lock) = 0;
};

} // namespace ZuHost
