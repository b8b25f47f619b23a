#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace ZuTest
{

/// Lets this process open only so many further descriptors. The destructor restores the limit of before.
class DescriptorLimit final
{
public:
    explicit DescriptorLimit(unsigned further)
    {
        getrlimit(RLIMIT_NOFILE, &before);
        std::vector<int> free; // the lowest ones
        for (unsigned i = 0; i <= further; ++i)
        {
            free.push_back(open("/dev/null", O_RDONLY | O_CLOEXEC));
        }
        rlimit const tight{static_cast<rlim_t>(free.back()), before.rlim_max};
        for (int const descriptor : free)
        {
            close(descriptor);
        }
        setrlimit(RLIMIT_NOFILE, &tight);
    }

    ~DescriptorLimit()
    {
        setrlimit(RLIMIT_NOFILE, &before);
    }

    DescriptorLimit(DescriptorLimit const&) = delete;
    DescriptorLimit& operator=(DescriptorLimit const&) = delete;

private:
    rlimit before{};
};

} // namespace ZuTest
