#pragma once

#include "Plugins/AsciiTcp/AsciiOutputMap.h"
#include "Plugins/AsciiTcp/AsciiText.h"
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

/// Keeps the newest reading of each output, and writes a line to the feed for each result set while the feed has
/// readers.
///
/// An output with a source that is not in a set keeps its reading and is left out of that set's line. The reading of a
/// measurement is its value and decision, of a stamp its frame counter; results of other types are "invalid".
/// Threads: any thread may call; results arrive on the dispatcher's thread only.
class ResultBoard final
{
public:
    ResultBoard(DataFeed& usedFeed, AsciiCounters& usedCounters);
    ~ResultBoard();
    ResultBoard(ResultBoard const&) = delete;
    ResultBoard& operator=(ResultBoard const&) = delete;

    /// Replaces the outputs. An output that keeps its name and source keeps its reading.
    void Install(std::shared_ptr<OutputTable const> newTable);

    /// Takes effect with the next line or answer.
    void SetDecimals(uint32 newDecimals);

    /// Processes all sets of the batch in order. Returns true if the feed has new lines.
    bool Process(wArrayList const& resultSets);

    /// Appends "name value decision". Returns false and appends nothing if there is no such output.
    bool AppendReading(std::string& line, std::string_view name) const;

    /// Appends the number of outputs, then their names.
    void AppendNames(std::string& line) const;

private:
    std::shared_ptr<OutputTable const> Table() const;
    void TakeSet(ZuCore::ResultSetObject const* resultSet, OutputTable const& table);
    void WriteLine(OutputTable const& table);

    DataFeed& feed;
    AsciiCounters& counters;
    std::atomic<uint32> decimals{0}; // publishes no other data

    // A leaf, held while readings are copied.
    mutable Zu::Mutex lock;
    std::shared_ptr<OutputTable const> table ZU_GUARDED_BY(lock);
    std::vector<Reading> newest ZU_GUARDED_BY(lock); // one for each output of the table

    // Used on the dispatcher's thread only; kept to reuse their memory.
    std::vector<Reading> ofSet;
    std::vector<Reading> ofBatch;
    std::string frame; // frame counter of the set, or "-"
    std::string line;
};

} // namespace AsciiTcp
