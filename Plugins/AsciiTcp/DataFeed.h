#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace AsciiTcp
{

/// The newest result lines, kept once for all clients. Each client reads on from where it is, and one that is too slow for
/// what comes misses the oldest.
///
/// Memory: MAX_BYTES, taken with the first line; nothing allocates after that. Threads: any. Its lock is a leaf, held while
/// lines are copied in or out and never while a client is waited for.
class DataFeed final
{
public:
    static constexpr std::size_t MAX_LINES = 1024;
    static constexpr std::size_t MAX_BYTES = 1024 * 1024;

    DataFeed();
    ~DataFeed();
    DataFeed(DataFeed const&) = delete;
    DataFeed& operator=(DataFeed const&) = delete;

    /// From now on there is one more who reads, or one less.
    void AddReader();
    void RemoveReader();

    /// Whether anybody reads: a line that is made for nobody costs as much as any other.
    bool HasReaders() const;

    /// Adds a line, end included. One that is longer than MAX_BYTES is missed by everybody.
    void Publish(std::string_view line);

    /// The line behind the newest: where one who begins to read begins.
    uint64 End() const;

    /// Appends lines from `next` on, whole ones, for as long as fewer than `limit` bytes are appended, and moves `next` on.
    /// Gives the number of lines that were missed before them, also when nothing is appended.
    uint64 Read(uint64& next, std::string& appended, std::size_t limit);

private:
    struct Line
    {
        uint64 begin = 0; // of all bytes that were ever kept
        std::size_t size = 0;
    };

    Line& At(uint64 number) ZU_REQUIRES(lock);
    void MakeRoom(std::size_t size) ZU_REQUIRES(lock);
    void Keep(std::string_view bytes) ZU_REQUIRES(lock);
    void Append(std::string& appended, Line const& line) const ZU_REQUIRES(lock);

    std::atomic<uint64> readerCount{0}; // publishes nothing

    mutable Zu::Mutex lock;
    std::vector<char> bytes ZU_GUARDED_BY(lock); // a ring
    uint64 bytesEnd ZU_GUARDED_BY(lock) = 0;
    std::array<Line, MAX_LINES> lines ZU_GUARDED_BY(lock); // a ring
    uint64 first ZU_GUARDED_BY(lock) = 0;                  // numbers of lines: those that are kept
    uint64 end ZU_GUARDED_BY(lock) = 0;
};

} // namespace AsciiTcp
