#include "Host/Clinic/SealedFile.h"

#include "ZuApi/Exception.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace ZuHost
{

namespace
{

constexpr int SEALS = F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

[[noreturn]] void FailToRead(char const* reason)
{
    ZU_THROW(Zu::Status::NOT_FOUND, "it cannot be read: %s", reason);
}

} // namespace

SealedFile::SealedFile(std::filesystem::path const& file)
{
    int const source = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); // a pipe would block
    if (source < 0)
    {
        FailToRead(std::strerror(errno));
    }
    try
    {
        CopyFrom(source);
        Seal();
    }
    catch (...)
    {
        close(source);
        close(descriptor);
        throw;
    }
    close(source);
}

SealedFile::~SealedFile()
{
    munmap(mapped, size);
    close(descriptor);
}

std::string_view SealedFile::Bytes() const
{
    return {static_cast<char const*>(mapped), size};
}

std::filesystem::path SealedFile::Path() const
{
    return "/proc/self/fd/" + std::to_string(descriptor);
}

void SealedFile::CopyFrom(int source)
{
    descriptor = memfd_create("plug-in", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (descriptor < 0)
    {
        FailToRead(std::strerror(errno));
    }
    std::array<char, 64 * 1024> bytes;
    for (ssize_t count = 0; (count = read(source, bytes.data(), bytes.size())) != 0;)
    {
        if (count < 0 || write(descriptor, bytes.data(), static_cast<std::size_t>(count)) != count)
        {
            FailToRead(std::strerror(errno));
        }
        size += static_cast<std::size_t>(count);
        if (size > MAX_BYTES)
        {
            FailToRead("it is larger than 256 MiB");
        }
    }
    if (size == 0)
    {
        FailToRead("it is empty");
    }
}

void SealedFile::Seal()
{
    bool const isSealed = fcntl(descriptor, F_ADD_SEALS, SEALS) == 0;
    mapped = isSealed ? mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0) : MAP_FAILED;
    if (mapped == MAP_FAILED)
    {
        FailToRead(std::strerror(errno));
    }
}

} // namespace ZuHost
