#include "Host/Store/ForgetfulDisk.h"

#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstring>

namespace ZuTest
{

namespace
{

constexpr char const* NAME = "forgetful";

ForgetfulDisk& DiskOf(sqlite3_vfs* vfs)
{
    return *static_cast<ForgetfulDisk*>(vfs->pAppData);
}

} // namespace

/// An open file of SQLite, and the functions for it.
struct DiskCalls
{
    using Content = ForgetfulDisk::Content;

    struct File
    {
        sqlite3_file base; // first member: SQLite uses a pointer to it for the whole object
        ForgetfulDisk* disk;
        std::shared_ptr<Content>* content;
        bool isJournal;
    };

    static File& Of(sqlite3_file* file)
    {
        return *reinterpret_cast<File*>(file);
    }

    static int Close(sqlite3_file* file)
    {
        delete Of(file).content;
        return SQLITE_OK;
    }

    static int Read(sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset)
    {
        std::string const& text = (*Of(file).content)->current;
        auto const wanted = static_cast<std::size_t>(count);
        std::size_t const from = std::min(static_cast<std::size_t>(offset), text.size());
        std::size_t const found = std::min(wanted, text.size() - from);
        std::memset(bytes, 0, wanted);
        std::memcpy(bytes, text.data() + from, found);
        return found == wanted ? SQLITE_OK : SQLITE_IOERR_SHORT_READ;
    }

    static int Write(sqlite3_file* file, void const* bytes, int count, sqlite3_int64 offset)
    {
        if (!Of(file).disk->CountChange())
        {
            return SQLITE_IOERR_WRITE;
        }
        Content& content = **Of(file).content;
        std::string const written(static_cast<char const*>(bytes), static_cast<std::size_t>(count));
        auto const from = static_cast<std::size_t>(offset);
        content.current.resize(std::max(content.current.size(), from + written.size()));
        content.current.replace(from, written.size(), written);
        content.changes.push_back({from, written});
        return SQLITE_OK;
    }

    static int Truncate(sqlite3_file* file, sqlite3_int64 size)
    {
        if (!Of(file).disk->CountChange())
        {
            return SQLITE_IOERR_TRUNCATE;
        }
        Content& content = **Of(file).content;
        content.current.resize(static_cast<std::size_t>(size));
        content.shortest = std::min(content.shortest, content.current.size());
        return SQLITE_OK;
    }

    static int Sync(sqlite3_file* file, int /*flags*/)
    {
        if (!Of(file).disk->CountChange())
        {
            return SQLITE_IOERR_FSYNC;
        }
        ForgetfulDisk::Synchronise(**Of(file).content);
        if (Of(file).isJournal)
        {
            Of(file).disk->SynchroniseNames();
        }
        return SQLITE_OK;
    }

    static int Size(sqlite3_file* file, sqlite3_int64* size)
    {
        *size = static_cast<sqlite3_int64>((*Of(file).content)->current.size());
        return SQLITE_OK;
    }

    static int Lock(sqlite3_file* /*file*/, int /*level*/)
    {
        return SQLITE_OK;
    }

    static int IsReserved(sqlite3_file* /*file*/, int* result)
    {
        *result = 0;
        return SQLITE_OK;
    }

    static int Control(sqlite3_file* /*file*/, int /*operation*/, void* /*argument*/)
    {
        return SQLITE_NOTFOUND;
    }

    static int SectorSize(sqlite3_file* /*file*/)
    {
        return ForgetfulDisk::SECTOR_BYTES;
    }

    static int Characteristics(sqlite3_file* /*file*/)
    {
        return 0; // no device characteristics
    }

    static int Open(sqlite3_vfs* vfs, char const* name, sqlite3_file* file, int flags, int* outFlags)
    {
        static sqlite3_io_methods const METHODS{
            1,          Close,           Read, Write, Truncate, Sync, Size, Lock, Lock, IsReserved, Control,
            SectorSize, Characteristics, {},   {},    {},       {},   {},   {}};
        ForgetfulDisk& disk = DiskOf(vfs);
        file->pMethods = nullptr;
        auto found = disk.current.find(name);
        if (found == disk.current.end())
        {
            if ((flags & SQLITE_OPEN_CREATE) == 0 || !disk.CountChange())
            {
                return SQLITE_CANTOPEN;
            }
            found = disk.current.emplace(name, std::make_shared<Content>()).first;
        }
        Of(file).disk = &disk;
        Of(file).content = new std::shared_ptr<Content>(found->second);
        Of(file).isJournal = (flags & SQLITE_OPEN_MAIN_JOURNAL) != 0;
        file->pMethods = &METHODS;
        if (outFlags != nullptr)
        {
            *outFlags = flags;
        }
        return SQLITE_OK;
    }

    static int Delete(sqlite3_vfs* vfs, char const* name, int syncFolder)
    {
        ForgetfulDisk& disk = DiskOf(vfs);
        if (!disk.CountChange())
        {
            return SQLITE_IOERR_DELETE;
        }
        bool const isGone = disk.current.erase(name) == 0;
        if (syncFolder != 0)
        {
            disk.SynchroniseNames();
        }
        return isGone ? SQLITE_IOERR_DELETE_NOENT : SQLITE_OK;
    }

    static int Access(sqlite3_vfs* vfs, char const* name, int /*flags*/, int* result)
    {
        *result = DiskOf(vfs).current.contains(name) ? 1 : 0;
        return SQLITE_OK;
    }

    static int FullName(sqlite3_vfs* /*vfs*/, char const* name, int size, char* full)
    {
        sqlite3_snprintf(size, full, "%s", name);
        return SQLITE_OK;
    }

    static int Randomness(sqlite3_vfs* /*vfs*/, int size, char* bytes)
    {
        std::memset(bytes, 7, static_cast<std::size_t>(size)); // the same in every run
        return size;
    }

    static int Sleep(sqlite3_vfs* /*vfs*/, int /*usec*/)
    {
        return SQLITE_OK;
    }

    static int Time(sqlite3_vfs* /*vfs*/, double* julianDay)
    {
        *julianDay = 2460000.5;
        return SQLITE_OK;
    }

    static int LastError(sqlite3_vfs* /*vfs*/, int /*size*/, char* /*text*/)
    {
        return 0;
    }
};

ForgetfulDisk::ForgetfulDisk() : vfs(std::make_unique<sqlite3_vfs>())
{
    vfs->iVersion = 1;
    vfs->szOsFile = sizeof(DiskCalls::File);
    vfs->mxPathname = 512;
    vfs->zName = NAME;
    vfs->pAppData = this;
    vfs->xOpen = DiskCalls::Open;
    vfs->xDelete = DiskCalls::Delete;
    vfs->xAccess = DiskCalls::Access;
    vfs->xFullPathname = DiskCalls::FullName;
    vfs->xRandomness = DiskCalls::Randomness;
    vfs->xSleep = DiskCalls::Sleep;
    vfs->xCurrentTime = DiskCalls::Time;
    vfs->xGetLastError = DiskCalls::LastError;
    sqlite3_vfs_register(vfs.get(), 1);
}

ForgetfulDisk::~ForgetfulDisk()
{
    sqlite3_vfs_unregister(vfs.get());
}

void ForgetfulDisk::CutPowerAt(uint64 operation)
{
    operations = 0;
    cutAt = operation;
}

uint64 ForgetfulDisk::Operations() const
{
    return operations;
}

void ForgetfulDisk::Restart(Memory memory, uint32 seed)
{
    cutAt = ~uint64{0};
    std::mt19937 chance(seed);
    if (memory == Memory::SOME)
    {
        for (auto const& [name, content] : current)
        {
            if (chance() % 2 == 0)
            {
                durable[name] = content; // created, or created again
            }
        }
        std::erase_if(durable, [&](auto const& one) { return !current.contains(one.first) && chance() % 2 == 0; });
    }
    for (auto const& [name, content] : durable)
    {
        if (memory == Memory::SOME)
        {
            Remember(*content, chance);
        }
        content->current = content->durable;
        content->changes.clear();
        content->shortest = ~std::size_t{0};
    }
    current = durable;
}

bool ForgetfulDisk::CountChange()
{
    return ++operations < cutAt;
}

void ForgetfulDisk::Synchronise(Content& content)
{
    content.durable = content.current;
    content.changes.clear();
    content.shortest = ~std::size_t{0};
}

void ForgetfulDisk::SynchroniseNames()
{
    durable = current;
}

/// Chooses at random, for each sector of each change, whether it has reached the disk.
void ForgetfulDisk::Remember(Content& content, std::mt19937& chance)
{
    if (content.shortest < content.durable.size() && chance() % 2 == 0)
    {
        content.durable.resize(content.shortest);
    }
    for (Change const& change : content.changes)
    {
        for (std::size_t done = 0; done < change.bytes.size();)
        {
            std::size_t const from = change.offset + done;
            std::size_t const count = std::min(SECTOR_BYTES - from % SECTOR_BYTES, change.bytes.size() - done);
            if (chance() % 2 == 0)
            {
                content.durable.resize(std::max(content.durable.size(), from + count));
                content.durable.replace(from, count, change.bytes, done, count);
            }
            done += count;
        }
    }
}

} // namespace ZuTest
