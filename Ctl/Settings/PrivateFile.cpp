#include "Ctl/Settings/PrivateFile.h"

#include "Ctl/Outcome/Failure.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace ZuCtl
{

namespace
{

constexpr char const* IS_THERE = "is there already: give another name, or --force";
constexpr std::size_t MAX_FILE_BYTES = 1024u * 1024u * 1024u;

[[noreturn]] void Refuse(std::filesystem::path const& file, std::string const& reason)
{
    throw Failure(ExitStatus::LOCAL_FILE, "'" + file.string() + "' " + reason);
}

class Descriptor final
{
public:
    explicit Descriptor(int newNumber) noexcept : number(newNumber)
    {
    }
    ~Descriptor()
    {
        if (number >= 0)
        {
            close(number);
        }
    }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    int const number;
};

std::string ReadAll(int descriptor, std::filesystem::path const& file)
{
    std::string bytes;
    char part[65536];
    for (ssize_t size = 1; size > 0;)
    {
        size = read(descriptor, part, sizeof part);
        if (size < 0 || bytes.size() > MAX_FILE_BYTES)
        {
            Refuse(file, size < 0 ? std::string("cannot be read: ") + std::strerror(errno) : "is longer than 1 GiB");
        }
        bytes.append(part, static_cast<std::size_t>(size));
    }
    return bytes;
}

/// Opens the file; a pipe does not hold the program up.
int Open(std::filesystem::path const& file)
{
    int const descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
    {
        Refuse(file, std::string("cannot be read: ") + std::strerror(errno));
    }
    return descriptor;
}

void WriteAll(int descriptor, std::string const& bytes, std::filesystem::path const& file)
{
    std::size_t written = 0;
    while (written < bytes.size())
    {
        ssize_t const size = write(descriptor, bytes.data() + written, bytes.size() - written);
        if (size < 0 && errno != EINTR)
        {
            Refuse(file, std::string("cannot be written: ") + std::strerror(errno));
        }
        written += size > 0 ? static_cast<std::size_t>(size) : 0;
    }
    if (fsync(descriptor) != 0)
    {
        Refuse(file, std::string("cannot be written: ") + std::strerror(errno));
    }
}

/// Returns the error number, 0 for success.
int Rename(std::string const& from, std::filesystem::path const& to, unsigned flags) noexcept
{
    return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0 ? 0 : errno;
}

/// Gives a complete file its name. Without `mayReplace` a file that another program has made meanwhile stays.
void Publish(std::string const& draft, std::filesystem::path const& file, bool mayReplace)
{
    int error = Rename(draft, file, mayReplace ? 0 : RENAME_NOREPLACE);
    if (error == EINVAL && !mayReplace) // not every file system knows the flag
    {
        error = Rename(draft, file, 0);
    }
    if (error != 0)
    {
        Refuse(file, error == EEXIST ? IS_THERE : std::string("cannot be written: ") + std::strerror(error));
    }
}

/// Removes a file at the end, unless it has another name by then.
class Draft final
{
public:
    explicit Draft(std::string newName) : name(std::move(newName))
    {
    }
    ~Draft()
    {
        unlink(name.c_str());
    }
    Draft(Draft const&) = delete;
    Draft& operator=(Draft const&) = delete;

    std::string name;
};

} // namespace

std::string ReadPrivateFile(std::filesystem::path const& file)
{
    Descriptor const descriptor(Open(file));
    struct stat facts
    {
    };
    fstat(descriptor.number, &facts);
    if (!S_ISREG(facts.st_mode))
    {
        Refuse(file, "is no file");
    }
    if (facts.st_uid != geteuid() && facts.st_uid != 0)
    {
        Refuse(file, "belongs to another user");
    }
    if ((facts.st_mode & (S_IRWXG | S_IRWXO)) != 0)
    {
        Refuse(file, "has a secret, and others can read it: chmod 600");
    }
    return ReadAll(descriptor.number, file);
}

std::string ReadSecret(std::filesystem::path const& file)
{
    constexpr char const* SPACES = " \t\r";
    std::string const text = ReadPrivateFile(file);
    std::string line = text.substr(0, text.find('\n'));
    line.erase(0, line.find_first_not_of(SPACES));
    line.erase(line.find_last_not_of(SPACES) + 1);
    if (line.empty())
    {
        Refuse(file, "has nothing in its first line");
    }
    return line;
}

std::string ReadWholeFile(std::filesystem::path const& file)
{
    Descriptor const descriptor(Open(file));
    return ReadAll(descriptor.number, file);
}

void CheckFileToWrite(std::filesystem::path const& file, bool mayReplace)
{
    std::error_code error;
    auto const status = std::filesystem::symlink_status(file, error);
    if (!std::filesystem::exists(status))
    {
        return; // also if the system does not tell: the write then fails
    }
    if (!mayReplace)
    {
        Refuse(file, IS_THERE);
    }
    if (!std::filesystem::is_regular_file(status))
    {
        Refuse(file, "is a link, a folder or a device: give the name of a file");
    }
}

void WritePrivateFile(std::filesystem::path const& file, std::string const& bytes, bool mayReplace)
{
    CheckFileToWrite(file, mayReplace);
    std::string name = file.string() + ".XXXXXX";
    Descriptor const descriptor(mkostemp(name.data(), O_CLOEXEC)); // with mode 600
    if (descriptor.number < 0)
    {
        Refuse(file, std::string("cannot be written: ") + std::strerror(errno));
    }
    Draft const draft(std::move(name));
    WriteAll(descriptor.number, bytes, file);
    Publish(draft.name, file, mayReplace);
}

} // namespace ZuCtl
