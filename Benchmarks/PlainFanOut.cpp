#include "PlainFanOut.h"

#include "ZuCore/DataSourceHash.h"

namespace ZuBench
{

PlainFanOut::PlainFanOut(uint64 receivers, std::vector<std::string> const& sources) : maps(receivers), kept(receivers)
{
    for (Wanted& wanted : maps)
    {
        for (std::string const& source : sources)
        {
            wanted.emplace(ZuCore::DataSourceHash(source), source);
        }
    }
}

PlainFanOut::~PlainFanOut() = default;

void PlainFanOut::StartThreads()
{
    for (uint64 i = 0; i < maps.size(); ++i)
    {
        threads.push_back(std::make_unique<PlainDoubleBuffer<Reduced>>([](std::vector<Reduced>&) {}));
    }
}

void PlainFanOut::Process(ZuCore::ResultSet set)
{
    for (uint64 i = 0; i < maps.size(); ++i)
    {
        Reduced reduced = Reduce(maps[i], set);
        if (threads.empty())
        {
            kept[i].push_back(std::move(reduced));
        }
        else
        {
            threads[i]->Add(std::move(reduced));
        }
    }
}

void PlainFanOut::Release()
{
    for (auto& sets : kept)
    {
        sets.clear();
    }
}

PlainFanOut::Reduced PlainFanOut::Reduce(Wanted const& wanted, ZuCore::ResultSet set)
{
    auto reduced = std::make_unique<Set>();
    uint64 const count = ZuCore::ResultSet_Count(set);
    for (uint64 i = 0; i < count; ++i)
    {
        ZuCore::ResultItem const item = ZuCore::ResultSet_At(set, i);
        ZuCore::ResultInfo const info = ZuCore::ResultItem_ResultInfo(item);
        if (wanted.contains(ZuCore::ResultInfo_NumericId(info)))
        {
            reduced->push_back(
                std::make_unique<Item>(wHandle_Share(ZuCore::ResultItem_MsgInfo(item)), wHandle_Share(info)));
        }
    }
    return reduced;
}

} // namespace ZuBench
