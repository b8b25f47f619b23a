#pragma once

#include "Host/CommandLine/Options.h"
#include "ZuCommon/Problems.h"

#include <string>

namespace ZuHost
{

class Application;
class LogScope;

/// Reads the files of a running host again when a hang-up signal asks for it: the configuration, the token and the
/// certificates. A file with a fault leaves the old state in force; that of the configuration and of the token is a problem
/// until the next signal. One thread uses it.
class HangUp final
{
public:
    /// `startOptions` are those with which the host was started. All three outlive this.
    HangUp(Options const& startOptions, Application& usedApplication, LogScope& usedLog);

    HangUp(HangUp const&) = delete;
    HangUp& operator=(HangUp const&) = delete;

    /// Answers one signal. Waits for the disk.
    void Answer();

private:
    void ReadConfigurationAgain();
    void ReadTokenAgain();
    void Complain(std::string const& sentence);

    Options const& options;
    Application& application;
    LogScope& log;
    ZuCommon::ProblemsTracker problems;
};

} // namespace ZuHost
