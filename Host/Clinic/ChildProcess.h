#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace ZuHost
{

/// Work that may take its process down with it, done in a process of its own.
///
/// The child is a copy of this process and is made without a new program, so it starts in a moment; this process must have
/// a single thread when it asks for one, or the child would find locks taken by threads that it does not have.
class ChildProcess final
{
public:
    /// Tells this process something, from within the work.
    using Say = std::function<void(std::string const& text)>;
    using Work = std::function<void(Say const& say)>;

    /// How the work ended.
    struct End
    {
        std::vector<std::string> said; ///< in order
        std::string fault;             ///< empty when the work ran to its end; else what became of the process
    };

    /// Does `work` and waits for it. A child that says nothing for `longestSilence` is killed, and so is one that says more
    /// than MOST_BYTES. What the work throws counts as its end: who wants it told says it. Nothing of the child is destroyed.
    /// Throws -998 when the system gives no process.
    static End Run(Work const& work, std::chrono::milliseconds longestSilence);

    static constexpr std::size_t MOST_BYTES = 1U << 20;
};

} // namespace ZuHost
