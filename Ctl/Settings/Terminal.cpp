#include "Ctl/Settings/Terminal.h"

#include "Ctl/Outcome/Failure.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <termios.h>
#include <unistd.h>

namespace ZuCtl
{

namespace
{

constexpr std::array SIGNALS{SIGINT, SIGTERM, SIGQUIT, SIGHUP};

// Of the one question that is being asked. The signal handler reads them.
int terminal = -1;
termios before{};

/// Ends the process as the signal does, with a terminal that shows again what is typed.
void OnSignal(int signal)
{
    tcsetattr(terminal, TCSANOW, &before);
    std::signal(signal, SIG_DFL);
    raise(signal);
}

/// Keeps a terminal from showing what is typed, until the end of the object or of the process.
class Silence final
{
public:
    explicit Silence(int usedTerminal) noexcept
    {
        terminal = usedTerminal;
        tcgetattr(terminal, &before);
        struct sigaction action
        {
        };
        action.sa_handler = &OnSignal;
        sigemptyset(&action.sa_mask);
        for (std::size_t i = 0; i < SIGNALS.size(); ++i)
        {
            sigaction(SIGNALS[i], &action, &replaced[i]);
        }
        termios silent = before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(terminal, TCSAFLUSH, &silent);
    }
    ~Silence()
    {
        tcsetattr(terminal, TCSAFLUSH, &before);
        for (std::size_t i = 0; i < SIGNALS.size(); ++i)
        {
            sigaction(SIGNALS[i], &replaced[i], nullptr);
        }
    }
    Silence(Silence const&) = delete;
    Silence& operator=(Silence const&) = delete;

private:
    std::array<struct sigaction, SIGNALS.size()> replaced{};
};

} // namespace

std::string AskForSecret(std::string const& question, std::string const& option)
{
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> const stream(std::fopen("/dev/tty", "r+e"), &std::fclose);
    if (stream == nullptr)
    {
        throw Failure(ExitStatus::USAGE, "There is no terminal to ask for the " + question + ": give " + option);
    }
    std::fprintf(stream.get(), "%s: ", question.c_str());
    std::fflush(stream.get());
    std::string answer;
    {
        Silence const silence(fileno(stream.get()));
        for (int letter = std::fgetc(stream.get()); letter != '\n' && letter != EOF; letter = std::fgetc(stream.get()))
        {
            answer += static_cast<char>(letter);
        }
    }
    std::fputs("\n", stream.get());
    if (answer.empty())
    {
        throw Failure(ExitStatus::USAGE, "Nothing was typed");
    }
    return answer;
}

std::string AskForNewSecret(std::string const& question, std::string const& option)
{
    std::string const first = AskForSecret("New " + question, option);
    if (AskForSecret(question + " once more", option) != first)
    {
        throw Failure(ExitStatus::USAGE, "The two texts differ");
    }
    return first;
}

} // namespace ZuCtl
