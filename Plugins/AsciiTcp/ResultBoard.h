#pragma once

#include "Plugins/AsciiTcp/AsciiText.h"
#include "Plugins/AsciiTcp/OutputTable.h"
#include "Plugins/AsciiTcp/Reading.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class wArrayList;

namespace ZuCore
{
struct ResultSetObject;
}

namespace AsciiTcp
{

class DataFeed;
struct AsciiCounters;

/// The newest reading of each output, and a line in the feed for each result set while somebody reads it.
///
/// An output whose source is not in a set keeps its reading, and is left out of that set's line. A measurement reads its
/// value and decision, a stamp its frame counter, and whatever else is "invalid".
/// Threads: any; results come on the dispatcher's thread alone.
class ResultBoard final
{
public:
    ResultBoard(DataFeed& usedFeed, AsciiCounters& usedCounters);
    ~ResultBoard();
    ResultBoard(ResultBoard const&) = delete;
    ResultBoard& operator=(ResultBoard const&) = delete;

    /// From now on these are the outputs. One that keeps name and source keeps its reading.
    void Install(std::shared_ptr<OutputTable const> newTable);

    /// Applies to what is written from now on.
    void SetDecimals(uint32 newDecimals);

    /// Takes every set of the batch, in order. True when the feed has something new.
    bool Process(wArrayList const& resultSets);

    /// Appends "name value decision"; false, and nothing, when there is no such output.
    bool AppendReading(std::string& line, std::string_view name) const;

    /// Appends the number of outputs and then their names.
    void AppendNames(std::string& line) const;

private:
    std::shared_ptr<OutputTable const> Table() const;
    void TakeSet(ZuCore::ResultSetObject const* resultSet, OutputTable const& table);
    void WriteLine(OutputTable const& table);

    DataFeed& feed;
    AsciiCounters& counters;
    std::atomic<uint32> decimals{0}; // publishes nothing

    // A leaf, held for as long as readings are copied. Guards the two below.
    mutable Zu::Mutex lock;
    std::shared_ptr<OutputTable const> table ZU_GUARDED_BY(lock);
    std::vector<Reading> newest ZU_GUARDED_BY(lock); // one for each output of the table

    // Of the dispatcher's thread, kept for their memory.
    std::vector<Reading> ofSet;
    std::vector<Reading> ofBatch;
    std::string frame; // of the set: its frame counter, or "-"
    std::string line;
};

} // namespace AsciiTcp
