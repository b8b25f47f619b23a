#pragma once

#include "ZuCore/ResultSet.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace ZuBench
{

/// A set as the sensor publishes it: a measurement for each of so many data sources.
class ResultFrame final
{
public:
    explicit ResultFrame(uint64 items);
    ~ResultFrame();

    ResultFrame(ResultFrame const&) = delete;
    ResultFrame& operator=(ResultFrame const&) = delete;

    ZuCore::ResultSet Set() const
    {
        return set.get();
    }

    uint64 Count() const
    {
        return ZuCore::ResultSet_Count(set.get());
    }

    /// The data sources of every `stride`-th item.
    std::vector<std::string> Sources(uint64 stride) const;

    /// Waits until all reduced sets of every `stride`-th item are released. Polls the last such item: sets release
    /// their items in order, so only this set still refers to any of them once only this set refers to the last.
    void WaitUntilReleased(uint64 stride) const;

private:
    wHandle<ZuCore::ResultSetObject> set;
};

} // namespace ZuBench
