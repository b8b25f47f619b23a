#include "Ctl/Settings/Terminal.h"

#include "Ctl/Outcome/Failure.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace ZuCtl
{

namespace
{

constexpr std::array SIGNALS{SIGINT, SIGTERM, SIGQUIT, SIGHUP};

volatile std::sig_atomic_t caught = 0; // the signal that has ended the question

void OnSignal(int signal)
{
    caught = signal;
}

/// Keeps a terminal from showing what is typed, until the end of the object. The signals that end the process wait
/// meanwhile, except in `ReadLine`; they have their effect at the end of the object.
class Silence final
{
public:
    explicit Silence(int usedTerminal) noexcept : terminal(usedTerminal)
    {
        caught = 0;
        struct sigaction action
        {
        };
        action.sa_handler = &OnSignal;
        sigset_t waiting;
        sigemptyset(&waiting);
        for (std::size_t i = 0; i < SIGNALS.size(); ++i)
        {
            sigaction(SIGNALS[i], &action, &replaced[i]);
            sigaddset(&waiting, SIGNALS[i]);
        }
        pthread_sigmask(SIG_BLOCK, &waiting, &mask);
        tcgetattr(terminal, &before);
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
        pthread_sigmask(SIG_SETMASK, &mask, nullptr);
        if (caught != 0)
        {
            raise(caught);
        }
    }
    Silence(Silence const&) = delete;
    Silence& operator=(Silence const&) = delete;

    /// What is typed up to the end of the line, the end of the input, or a signal.
    std::string ReadLine() const
    {
        std::string line;
        std::array<char, 1024> part{};
        pollfd input{terminal, POLLIN, 0};
        while (!line.ends_with('\n'))
        {
            int const ready = ppoll(&input, 1, nullptr, &mask);
            if (ready < 0 && errno == EINTR && caught == 0)
            {
                continue; // the process was stopped and goes on
            }
            ssize_t const size = ready > 0 ? read(terminal, part.data(), part.size()) : 0;
            if (size <= 0)
            {
                return line;
            }
            line.append(part.data(), static_cast<std::size_t>(size));
        }
        line.pop_back();
        return line;
    }

private:
    int const terminal;
    termios before{};
    sigset_t mask{}; // without the signals that wait
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
    std::string const answer = Silence(fileno(stream.get())).ReadLine();
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
