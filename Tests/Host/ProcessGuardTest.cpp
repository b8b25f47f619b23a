#include "Host/ProcessGuard.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ZuHost
{

namespace
{

/// Whether each of the standard descriptors is open after `Restrict` in a process that begins with all of them closed.
bool AreOccupied()
{
    for (int const descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    {
        close(descriptor);
    }
    ProcessGuard::Restrict();
    bool areOpen = true;
    for (int const descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    {
        areOpen = areOpen && fcntl(descriptor, F_GETFD) != -1;
    }
    return areOpen && write(STDERR_FILENO, "x", 1) == 1;
}

} // namespace

TEST(ProcessGuard, OccupiesTheStandardDescriptorsThatTheCallerHasClosed)
{
    pid_t const child = fork();
    if (child == 0)
    {
        _exit(AreOccupied() ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

} // namespace ZuHost
