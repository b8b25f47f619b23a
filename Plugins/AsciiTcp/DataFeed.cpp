#include "Plugins/AsciiTcp/DataFeed.h"

#include "wApi/wMutex.h"

#include <algorithm>
#include <cstring>

namespace AsciiTcp
{

DataFeed::DataFeed() = default;

DataFeed::~DataFeed() = default;

void DataFeed::AddReader()
{
    readerCount.fetch_add(1, std::memory_order_relaxed);
}

void DataFeed::RemoveReader()
{
    readerCount.fetch_sub(1, std::memory_order_relaxed);
}

bool DataFeed::HasReaders() const
{
    return readerCount.load(std::memory_order_relaxed) > 0;
}

void DataFeed::Publish(std::string_view line)
{
    Zu::MutexLock const guard(lock);
    if (line.size() > MAX_BYTES)
    {
        ++end;
        first = end; // readers miss this line and all before it
        return;
    }
    bytes.resize(MAX_BYTES); // allocates the first time only
    MakeRoom(line.size());
    At(end) = {bytesEnd, line.size()};
    Keep(line);
    ++end;
}

uint64 DataFeed::End() const
{
    Zu::MutexLock const guard(lock);
    return end;
}

uint64 DataFeed::Read(uint64& next, std::string& appended, std::size_t limit)
{
    Zu::MutexLock const guard(lock);
    uint64 const missed = next < first ? first - next : 0;
    next += missed;
    std::size_t const before = appended.size();
    for (; next < end && appended.size() - before < limit; ++next)
    {
        Append(appended, At(next));
    }
    return missed;
}

DataFeed::Line& DataFeed::At(uint64 number)
{
    return lines[number % MAX_LINES];
}

void DataFeed::MakeRoom(std::size_t size)
{
    while (first < end && (end - first == MAX_LINES || bytesEnd + size - At(first).begin > MAX_BYTES))
    {
        ++first;
    }
}

void DataFeed::Keep(std::string_view line)
{
    std::size_t const at = bytesEnd % MAX_BYTES;
    std::size_t const straight = std::min(line.size(), MAX_BYTES - at);
    std::memcpy(bytes.data() + at, line.data(), straight);
    std::memcpy(bytes.data(), line.data() + straight, line.size() - straight);
    bytesEnd += line.size();
}

void DataFeed::Append(std::string& appended, Line const& line) const
{
    std::size_t const at = line.begin % MAX_BYTES;
    std::size_t const straight = std::min(line.size, MAX_BYTES - at);
    appended.append(bytes.data() + at, straight);
    appended.append(bytes.data(), line.size - straight);
}

} // namespace AsciiTcp
