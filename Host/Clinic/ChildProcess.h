#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace ZuHost
{

/// Runs work that may crash or hang in a child process.
///
/// The child is a copy of this process and starts no new program, so it starts quickly. The calling process must have a
/// single thread; otherwise the child would inherit locks held by threads that it does not have.
class ChildProcess final
{
public:
    /// Sends a text from the work in the child to this process.
    using Say = std::function<void(std::string const& text)>;
    using Work = std::function<void(Say const& say)>;

    /// The result of the work.
    struct End
    {
        std::vector<std::string> said; ///< in order
        std::string fault;             ///< empty if the work ran to its end; else how the process ended
    };

    /// Runs `work` in a child and waits for it. Kills a child that sends nothing for `longestSilence`, or more than
    /// MOST_BYTES in all. An exception of the work ends it without a fault: work that has to report it calls `say`. No
    /// destructors of static objects run in the child. Throws `Zu::Status::NOT_OFFERED` when the system makes no
    /// process.
    static End Run(Work const& work, std::chrono::milliseconds longestSilence);

    static constexpr std::size_t MOST_BYTES = 1U << 20;
};

} // namespace ZuHost
