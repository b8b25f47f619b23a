#include "Ctl/Settings/Terminal.h"

#include "Ctl/Outcome/Failure.h"

#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <termios.h>
#include <unistd.h>

namespace ZuCtl
{

namespace
{

/// Keeps a terminal from showing what is typed, until the end of the object.
class Silence final
{
public:
    explicit Silence(int newTerminal) noexcept : terminal(newTerminal)
    {
        tcgetattr(terminal, &before);
        termios silent = before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(terminal, TCSAFLUSH, &silent);
    }
    ~Silence()
    {
        tcsetattr(terminal, TCSAFLUSH, &before);
    }
    Silence(Silence const&) = delete;
    Silence& operator=(Silence const&) = delete;

private:
    int const terminal;
    termios before{};
};

} // namespace

std::string AskForSecret(std::string const& question, std::string const& option)
{
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> const terminal(std::fopen("/dev/tty", "r+e"), &std::fclose);
    if (terminal == nullptr)
    {
        throw Failure(ExitStatus::USAGE, "There is no terminal to ask for the " + question + ": give " + option);
    }
    std::fprintf(terminal.get(), "%s: ", question.c_str());
    std::fflush(terminal.get());
    std::string answer;
    {
        Silence const silence(fileno(terminal.get()));
        for (int letter = std::fgetc(terminal.get()); letter != '\n' && letter != EOF;
             letter = std::fgetc(terminal.get()))
        {
            answer += static_cast<char>(letter);
        }
    }
    std::fputs("\n", terminal.get());
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
