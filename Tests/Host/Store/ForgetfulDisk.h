#pragma once

#include "wApi/wTypes.h"

#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

struct sqlite3_vfs;

namespace ZuTest
{

/// A disk in memory for SQLite that loses unsynchronised data at a power cut. While the object exists, it is SQLite's
/// default file system.
///
/// It keeps no more than a disk has to keep. Written bytes are durable once their file is synchronised. The creation or
/// deletion of a file is durable once the folder is synchronised: at the first synchronisation of a journal, or by a
/// deletion that requests it. For one thread. All files are closed when `Restart` is called.
class ForgetfulDisk final
{
public:
    /// The fate of unsynchronised data at a power cut.
    enum class Memory
    {
        NONE, ///< all of the data is lost
        SOME  ///< each sector and each name is kept or lost by chance
    };

    static constexpr std::size_t SECTOR_BYTES = 512;

    ForgetfulDisk();
    ~ForgetfulDisk();

    ForgetfulDisk(ForgetfulDisk const&) = delete;
    ForgetfulDisk& operator=(ForgetfulDisk const&) = delete;

    /// Cuts the power at the `operation`-th change from now on, counted from 1: this change and all later ones fail.
    void CutPowerAt(uint64 operation);

    /// The number of changes since `CutPowerAt`.
    uint64 Operations() const;

    /// Restores the power. The files then have their durable content; `SOME` adds changes at random, by `seed`.
    void Restart(Memory memory, uint32 seed);

private:
    friend struct DiskCalls;

    struct Change
    {
        std::size_t offset;
        std::string bytes;
    };

    struct Content
    {
        std::string current;
        std::string durable;
        std::vector<Change> changes;            // since the last synchronisation
        std::size_t shortest = ~std::size_t{0}; // the smallest size since then
    };

    using Names = std::map<std::string, std::shared_ptr<Content>>;

    /// Counts a change. Returns false if the power is off.
    bool CountChange();
    static void Synchronise(Content& content);
    void SynchroniseNames();
    static void Remember(Content& content, std::mt19937& chance);

    std::unique_ptr<sqlite3_vfs> vfs;
    Names current;
    Names durable;
    uint64 operations = 0;
    uint64 cutAt = ~uint64{0};
};

} // namespace ZuTest
