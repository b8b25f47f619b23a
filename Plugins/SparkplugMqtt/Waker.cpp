#include "Plugins/SparkplugMqtt/Waker.h"

#include "ZuApi/Exception.h"
#include "wApi/wTypes.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace SparkplugMqtt
{

Waker::Waker() : descriptor(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
{
    if (descriptor < 0)
    {
        ZU_THROW(Zu::Status::FAILURE, "The system has no descriptor left: %s", std::strerror(errno));
    }
}

Waker::~Waker()
{
    close(descriptor);
}

void Waker::Wake() noexcept
{
    uint64 const one = 1;
    [[maybe_unused]] auto const written = write(descriptor, &one, sizeof one); // a full counter is readable as well
}

void Waker::Clear() noexcept
{
    uint64 wakes = 0;
    [[maybe_unused]] auto const taken = read(descriptor, &wakes, sizeof wakes); // one call takes all wakes
}

} // namespace SparkplugMqtt
