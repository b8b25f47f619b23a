#pragma once

#include "PlainDoubleBuffer.h"
#include "ZuCore/ResultSet.h"
#include "wApi/wObject.h"
#include "wBeacon/wMsgInfo.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ZuBench
{

/// A simple implementation of the fan-out: a map of the wanted ids for each receiver, an object for each item.
class PlainFanOut final
{
public:
    struct Item
    {
        wHandle<wMsgInfo> msgInfo;
        wHandle<ZuCore::ResultInfoObject> info;
    };

    using Set = std::vector<std::unique_ptr<Item>>;
    using Reduced = std::unique_ptr<Set>;

    PlainFanOut(uint64 receivers, std::vector<std::string> const& sources);
    ~PlainFanOut();

    PlainFanOut(PlainFanOut const&) = delete;
    PlainFanOut& operator=(PlainFanOut const&) = delete;

    /// Starts a thread for each receiver, which releases the reduced sets. Without threads the sets stay until
    /// `Release`.
    void StartThreads();

    void Process(ZuCore::ResultSet set);
    void Release();

private:
    using Wanted = std::map<uint64, std::string>;

    static Reduced Reduce(Wanted const& wanted, ZuCore::ResultSet set);

    std::vector<Wanted> maps;
    std::vector<std::vector<Reduced>> kept;
    std::vector<std::unique_ptr<PlainDoubleBuffer<Reduced>>> threads;
};

} // namespace ZuBench
