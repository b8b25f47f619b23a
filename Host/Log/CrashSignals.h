#pragma once

#include <array>
#include <csignal>

namespace ZuHost
{

/// While it exists, a crash of the process (an abort, a memory fault) first lets the log writers write the lines that
/// wait, for a second at most. The signal then takes its previous course. One thread makes and destroys the objects,
/// the last one first.
class CrashSignals final
{
public:
    CrashSignals();
    ~CrashSignals(); ///< puts the previous handlers back

    CrashSignals(CrashSignals const&) = delete;
    CrashSignals& operator=(CrashSignals const&) = delete;

private:
    static constexpr std::size_t COUNT = 5;

    std::array<struct sigaction, COUNT> replaced{};
};

} // namespace ZuHost
