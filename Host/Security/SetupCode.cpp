#include "Host/Security/SetupCode.h"

#include "Host/Security/Randomness.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace ZuHost
{

namespace
{

constexpr std::size_t GROUPS = 4;
constexpr std::size_t GROUP_CHARACTERS = 4;
constexpr std::string_view ALPHABET = "23456789ABCDEFGHJKLMNPQRSTUVWXYZ"; // without characters that look alike

constexpr std::string_view IGNORED = "- \t\r\n";

/// The code as it is compared.
std::string Plain(std::string const& text)
{
    std::string plain;
    for (char const one : text)
    {
        if (IGNORED.find(one) != IGNORED.npos)
        {
            continue;
        }
        bool const isSmall = one >= 'a' && one <= 'z';
        plain.push_back(isSmall ? static_cast<char>(one - 'a' + 'A') : one);
    }
    return plain;
}

std::string MakeCode()
{
    std::string code;
    for (std::size_t i = 0; i < GROUPS; ++i)
    {
        code.append(i == 0 ? "" : "-").append(Randomness::Characters(GROUP_CHARACTERS, ALPHABET));
    }
    return code;
}

bool WriteAll(int descriptor, std::string_view text)
{
    while (!text.empty())
    {
        ssize_t const count = write(descriptor, text.data(), text.size());
        if (count < 0 && errno != EINTR)
        {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return true;
}

} // namespace

bool SetupCode::WriteToTerminal(std::string const& text)
{
    if (isatty(STDOUT_FILENO) == 1)
    {
        return WriteAll(STDOUT_FILENO, text);
    }
    int const terminal = open("/dev/tty", O_WRONLY | O_NOCTTY | O_CLOEXEC);
    bool const isWatched = terminal >= 0 && tcgetpgrp(terminal) == getpgrp();
    bool const isWritten = isWatched && WriteAll(terminal, text);
    if (terminal >= 0)
    {
        close(terminal);
    }
    return isWritten;
}

SetupCode::SetupCode(std::filesystem::path const& newFolder, Terminal newTerminal, Clock newClock)
    : file(newFolder / FILE_NAME), terminal(std::move(newTerminal)), clock(std::move(newClock))
{
}

SetupCode::~SetupCode()
{
    Spend();
}

void SetupCode::Offer()
{
    std::string const code = MakeCode();
    if (!terminal("The code for the first administrator, for one hour: " + code + "\n"))
    {
        WriteFile(code);
        ZU_LOG_WARNING("The code for the first administrator is in the file %s for one hour", file.c_str());
    }
    Zu::MutexLock const guard(lock);
    fingerprint = Randomness::Fingerprint(Plain(code));
    endUsec = clock() + VALID_USEC;
}

bool SetupCode::IsOffered() const
{
    Zu::MutexLock const guard(lock);
    return !fingerprint.empty() && clock() < endUsec;
}

bool SetupCode::Matches(std::string const& text) const
{
    std::string const given = Randomness::Fingerprint(Plain(text));
    Zu::MutexLock const guard(lock);
    return clock() < endUsec && Randomness::AreEqual(given, fingerprint);
}

void SetupCode::Spend() noexcept
{
    Zu::MutexLock const guard(lock);
    if (!fingerprint.empty())
    {
        fingerprint.clear();
        unlink(file.c_str());
    }
}

void SetupCode::WriteFile(std::string const& code) const
{
    unlink(file.c_str()); // of an earlier start that has crashed
    int const made = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    bool const isWritten = made >= 0 && WriteAll(made, code + "\n");
    int const reason = errno;
    if (made >= 0)
    {
        close(made);
    }
    if (!isWritten)
    {
        ZU_THROW(Zu::Status::FAILURE, "The code for the first administrator cannot be written to %s: %s", file.c_str(),
                 std::strerror(reason));
    }
}

} // namespace ZuHost
