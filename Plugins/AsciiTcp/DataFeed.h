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

/// The newest result lines, stored once for all clients. Each client has its own read position. A client that is too
/// slow misses the oldest lines.
///
/// Memory: MAX_BYTES, allocated with the first line; no allocation after that. Threads: any. The lock is a leaf, held
/// only while lines are copied.
class DataFeed final
{
public:
    static constexpr std::size_t MAX_LINES = 1024;
    static constexpr std::size_t MAX_BYTES = 1024 * 1024;

    DataFeed();
    ~DataFeed();
    DataFeed(DataFeed const&) = delete;
    DataFeed& operator=(DataFeed const&) = delete;

    /// Changes the number of readers.
    void AddReader();
    void RemoveReader();

    /// Whether there are readers. Without readers the caller need not format lines.
    bool HasReaders() const;

    /// Adds a line, including its end. All readers miss a line longer than MAX_BYTES.
    void Publish(std::string_view line);

    /// The number of the next line to come: the start position of a new reader.
    uint64 End() const;

    /// Appends whole lines from `next` on while fewer than `limit` bytes are appended, and advances `next`. Returns the
    /// number of lines missed before them, even if nothing is appended.
    uint64 Read(uint64& next, std::string& appended, std::size_t limit);

private:
    struct Line
    {
        uint64 begin = 0; // position among all bytes ever stored
        std::size_t size = 0;
    };

    Line& At(uint64 number) ZU_REQUIRES(lock);
    void MakeRoom(std::size_t size) ZU_REQUIRES(lock);
    void Keep(std::string_view bytes) ZU_REQUIRES(lock);
    void Append(std::string& appended, Line const& line) const ZU_REQUIRES(lock);

    std::atomic<uint64> readerCount{0}; // publishes no other data

    mutable Zu::Mutex lock;
    std::vector<char> bytes ZU_GUARDED_BY(lock); // a ring
    uint64 bytesEnd ZU_GUARDED_BY(lock) = 0;
    std::array<Line, MAX_LINES> lines ZU_GUARDED_BY(lock); // a ring
    uint64 first ZU_GUARDED_BY(lock) = 0;                  // numbers of the first stored line and of the next one
    uint64 end ZU_GUARDED_BY(lock) = 0;
};

} // namespace AsciiTcp
