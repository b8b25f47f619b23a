#include "Host/Clinic/ChildProcess.h"

#include "ZuApi/Exception.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ZuHost
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr char END_OF_TEXT = '\0';
constexpr char const* END_OF_WORK = "\1"; // the child's last text; no text of the work begins like this

class Descriptor final
{
public:
    explicit Descriptor(int newNumber) : number(newNumber)
    {
        if (number < 0)
        {
            ZU_THROW(Zu::Status::NOT_OFFERED, "the system gives no process: %s", std::strerror(errno));
        }
    }

    ~Descriptor()
    {
        close(number);
    }

    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    int Number() const
    {
        return number;
    }

private:
    int const number;
};

void WriteText(int descriptor, std::string const& text)
{
    char const* next = text.c_str();
    std::size_t left = text.size() + 1; // including END_OF_TEXT
    while (left > 0)
    {
        ssize_t const written = write(descriptor, next, left);
        if (written < 0 && errno != EINTR)
        {
            return; // the parent has closed its end
        }
        next += std::max<ssize_t>(written, 0);
        left -= static_cast<std::size_t>(std::max<ssize_t>(written, 0));
    }
}

[[noreturn]] void BeChild(ChildProcess::Work const& work, int descriptor)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL); // the child must not outlive the waiting parent
    rlimit const noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    dup2(STDERR_FILENO, STDOUT_FILENO); // the parent's standard output is read by programs
    try
    {
        work([descriptor](std::string const& text) { WriteText(descriptor, text); });
    }
    catch (...) // an exception ends the work as a return does
    {
    }
    WriteText(descriptor, END_OF_WORK);
    _exit(0); // no destructors: after the plug-in ran they might crash or hang
}

/// The C library's function lacks C linkage in some versions.
int OpenProcess(pid_t process)
{
    return static_cast<int>(syscall(SYS_pidfd_open, process, 0));
}

/// Reads the child's texts and waits for its end.
class Listener final
{
public:
    Listener(pid_t childId, int readDescriptor) : child(childId), reading(readDescriptor), alive(OpenProcess(childId))
    {
    }

    ChildProcess::End Listen(std::chrono::milliseconds longestSilence)
    {
        bool isSilent = false;
        while (!isSilent && WaitForMore(longestSilence, isSilent))
        {
            ReadAll();
        }
        if (isSilent || heard > ChildProcess::MOST_BYTES)
        {
            kill(child, SIGKILL);
        }
        int status = 0;
        waitpid(child, &status, 0);
        ReadAll();
        return {std::move(said), isEnded ? "" : FaultOf(status, isSilent, longestSilence)};
    }

private:
    /// Returns false when the child has ended or has sent too much.
    bool WaitForMore(std::chrono::milliseconds longestSilence, bool& isSilent)
    {
        Clock::time_point const deadline = Clock::now() + longestSilence;
        std::array<pollfd, 2> watched{pollfd{reading, POLLIN, 0}, pollfd{alive.Number(), POLLIN, 0}};
        int ready = -1;
        while (ready < 0)
        {
            auto const left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
            ready = poll(watched.data(), watched.size(), static_cast<int>(std::max<int64_t>(left.count(), 0)));
        }
        isSilent = ready == 0;
        return watched[1].revents == 0 && heard <= ChildProcess::MOST_BYTES;
    }

    void ReadAll()
    {
        std::array<char, 4096> bytes;
        while (heard <= ChildProcess::MOST_BYTES) // bounded: a child may never stop sending
        {
            ssize_t const count = read(reading, bytes.data(), bytes.size());
            if (count <= 0)
            {
                return;
            }
            heard += static_cast<std::size_t>(count);
            for (char const byte : std::string_view(bytes.data(), static_cast<std::size_t>(count)))
            {
                Take(byte);
            }
        }
    }

    void Take(char byte)
    {
        if (byte != END_OF_TEXT)
        {
            text.push_back(byte);
            return;
        }
        if (text == END_OF_WORK)
        {
            isEnded = true;
        }
        else
        {
            said.push_back(text);
        }
        text.clear();
    }

    std::string FaultOf(int status, bool isSilent, std::chrono::milliseconds longestSilence) const
    {
        if (isSilent)
        {
            return "came to no end within " + std::to_string(longestSilence.count()) + " ms";
        }
        if (heard > ChildProcess::MOST_BYTES)
        {
            return "did not stop talking";
        }
        if (WIFSIGNALED(status))
        {
            return "ended the process with signal " + std::to_string(WTERMSIG(status)) + " (" +
                   strsignal(WTERMSIG(status)) + ")";
        }
        return "ended the process with status " + std::to_string(WEXITSTATUS(status));
    }

    pid_t const child;
    int const reading;
    Descriptor const alive; // readable when the child has ended
    std::vector<std::string> said;
    std::string text; // an incomplete text
    std::size_t heard = 0;
    bool isEnded = false;
};

} // namespace

ChildProcess::End ChildProcess::Run(Work const& work, std::chrono::milliseconds longestSilence)
{
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0)
    {
        ZU_THROW(Zu::Status::NOT_OFFERED, "the system gives no pipe: %s", std::strerror(errno));
    }
    Descriptor const reading(ends[0]);
    std::optional<Descriptor> writing(std::in_place, ends[1]);
    pid_t const child = fork();
    if (child == 0)
    {
        BeChild(work, ends[1]);
    }
    if (child < 0)
    {
        ZU_THROW(Zu::Status::NOT_OFFERED, "the system gives no process: %s", std::strerror(errno));
    }
    writing.reset(); // only the child's end stays open
    fcntl(reading.Number(), F_SETFL, O_NONBLOCK);
    return Listener(child, reading.Number()).Listen(longestSilence);
}

} // namespace ZuHost
