// Input: a file in a folder of plug-ins.
//
// Checks: the file is refused with a reason, or its symbols and texts are read. No byte outside of the file is read.

#include "Fuzz/Support/Check.h"
#include "ZuApi/Exception.h"
#include "ZuPlugin/ElfText.h"

#include <cstdio>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace
{

/// A file in memory.
class MemoryFile final
{
public:
    MemoryFile() : descriptor(memfd_create("plugin", 0)), path("/proc/self/fd/" + std::to_string(descriptor))
    {
        ZU_FUZZ_CHECK(descriptor >= 0);
    }

    ~MemoryFile()
    {
        close(descriptor);
    }

    MemoryFile(MemoryFile const&) = delete;
    MemoryFile& operator=(MemoryFile const&) = delete;

    void Fill(uint8 const* data, std::size_t size)
    {
        ZU_FUZZ_CHECK(ftruncate(descriptor, 0) == 0);
        ZU_FUZZ_CHECK(pwrite(descriptor, data, size, 0) == static_cast<ssize_t>(size));
    }

    std::string const& Path() const
    {
        return path;
    }

private:
    int const descriptor;
    std::string const path;
};

void Read(std::string const& path)
{
    try
    {
        ZuPlugin::ElfText elf(path);
        elf.HasFunction("ZuPlugin_Count");
        ZU_FUZZ_CHECK(elf.Text("ZuPlugin_AbiText").size() <= 1024);
    }
    catch (Zu::Exception const& exception)
    {
        ZU_FUZZ_CHECK(exception.Status() == Zu::Status::BAD_FORMAT || exception.Status() == Zu::Status::NOT_FOUND);
        ZU_FUZZ_CHECK(exception.what()[0] != '\0');
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8 const* data, std::size_t size)
{
    static MemoryFile file;
    file.Fill(data, size);
    Read(file.Path());
    return 0;
}
