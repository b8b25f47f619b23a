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

/// A disk in memory for SQLite that forgets at a power cut what was not synchronised: it is SQLite's default for as long as
/// it lives.
///
/// It is as strict as a disk may be: what is written counts from the synchronisation of its file on, and that a file is made
/// or deleted from that of the folder, which comes with the first synchronisation of a journal and with a deletion that asks
/// for it. One thread, and no file open at the cut's end.
class ForgetfulDisk final
{
public:
    /// What becomes of what was not synchronised.
    enum class Memory
    {
        NONE, ///< all of it is lost
        SOME  ///< each sector and each name is kept or lost by chance
    };

    static constexpr std::size_t SECTOR_BYTES = 512;

    ForgetfulDisk();
    ~ForgetfulDisk();

    ForgetfulDisk(ForgetfulDisk const&) = delete;
    ForgetfulDisk& operator=(ForgetfulDisk const&) = delete;

    /// The power goes with the `operation`-th change from now on, from 1: it and all that come later fail.
    void CutPowerAt(uint64 operation);

    /// How many changes there have been since.
    uint64 Operations() const;

    /// The power is back, and everything as it was found.
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
        std::vector<Change> changes;            // of `durable`, since the last synchronisation
        std::size_t shortest = ~std::size_t{0}; // that it was cut to since
    };

    using Names = std::map<std::string, std::shared_ptr<Content>>;

    /// Counts a change; false when the power is off.
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
