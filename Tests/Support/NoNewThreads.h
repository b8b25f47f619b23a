#pragma once

#include <cstddef>
#include <pthread.h>

namespace ZuTest
{

/// While the object exists, every start of a thread fails: the default stack size exceeds all memory.
class NoNewThreads
{
public:
    NoNewThreads()
    {
        pthread_getattr_default_np(&before);
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, std::size_t{1} << 60);
        pthread_setattr_default_np(&attributes);
        pthread_attr_destroy(&attributes);
    }

    ~NoNewThreads()
    {
        pthread_setattr_default_np(&before);
        pthread_attr_destroy(&before);
    }

    NoNewThreads(NoNewThreads const&) = delete;
    NoNewThreads& operator=(NoNewThreads const&) = delete;

private:
    pthread_attr_t before{};
};

} // namespace ZuTest
