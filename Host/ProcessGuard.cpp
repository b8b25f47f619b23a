#include "Host/ProcessGuard.h"

#include <fcntl.h>
#include <optional>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ZuHost::ProcessGuard
{

namespace
{

constexpr mode_t FOR_OWNER_ALONE = S_IRWXG | S_IRWXO; // the rights that new files do not get

std::optional<rlimit> coreLimitBefore; // of the main thread

/// Occupies the standard descriptors that the caller has closed. Otherwise a connection or a file of the data folder would
/// get their numbers, and with them the log.
void OccupyStandardDescriptors()
{
    int descriptor = open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
    {
        descriptor = open("/dev/null", O_RDWR);
    }
    close(descriptor);
}

} // namespace

void Restrict()
{
    OccupyStandardDescriptors();
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    umask(FOR_OWNER_ALONE);
    prctl(PR_SET_DUMPABLE, 0, 0, 0, 0); // also where the system hands cores to a program, which has no limit
    rlimit limit{};
    if (getrlimit(RLIMIT_CORE, &limit) == 0)
    {
        coreLimitBefore = limit;
        limit.rlim_cur = 0;
        setrlimit(RLIMIT_CORE, &limit);
    }
}

void AllowCoreDumps()
{
    prctl(PR_SET_DUMPABLE, 1, 0, 0, 0);
    if (coreLimitBefore.has_value())
    {
        setrlimit(RLIMIT_CORE, &*coreLimitBefore);
    }
}

} // namespace ZuHost::ProcessGuard
