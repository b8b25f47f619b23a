#include "ZeroMqFanOut.h"

#include "ZuControl/Control/ScanOutputPlan.h"
#include "wApi/wObject.h"

namespace ZuBench
{

ZeroMqFanOut::ZeroMqFanOut(uint64 receivers, std::vector<std::string> const& sources)
{
    ZuControl::ScanOutputMap::Texts texts;
    for (std::string const& source : sources)
    {
        texts.try_emplace(ZuControl::ScanOutputMap::NumericId(source), source);
    }
    ZuControl::ScanOutputMap const map(std::move(texts));
    ZuControl::ScanOutputMap const* const maps[] = {&map};
    wanted = std::make_unique<ZuControl::ScanOutputPlan const>(maps);
    for (uint64 i = 0; i < receivers; ++i)
    {
        std::string const address = "inproc://receiver" + std::to_string(i);
        sockets.emplace_back(context, zmq::socket_type::push);
        sockets.back().set(zmq::sockopt::sndhwm, 0);
        sockets.back().bind(address);
        threads.emplace_back([this, address] { Receive(address); });
    }
}

ZeroMqFanOut::~ZeroMqFanOut()
{
    for (zmq::socket_t& socket : sockets)
    {
        socket.send(zmq::message_t(), zmq::send_flags::none); // the end
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}

void ZeroMqFanOut::Process(ZuCore::ResultSet set)
{
    uint64 const count = ZuCore::ResultSet_Count(set);
    for (zmq::socket_t& socket : sockets)
    {
        parts.clear();
        for (uint64 i = 0; i < count; ++i)
        {
            ZuCore::ResultItem const item = ZuCore::ResultSet_At(set, i);
            ZuCore::ResultInfo const info = ZuCore::ResultItem_ResultInfo(item);
            if (wanted->Wanting(ZuCore::ResultInfo_NumericId(info)) != 0)
            {
                parts.push_back(ZuCore::ResultItem_MsgInfo(item));
                parts.push_back(info);
            }
        }
        for (void* const part : parts)
        {
            wObject_Share(part);
        }
        socket.send(zmq::const_buffer(parts.data(), parts.size() * sizeof(void*)), zmq::send_flags::none);
    }
}

void ZeroMqFanOut::Receive(std::string const& address)
{
    zmq::socket_t socket(context, zmq::socket_type::pull);
    socket.set(zmq::sockopt::rcvhwm, 0);
    socket.connect(address);
    zmq::message_t message;
    while (socket.recv(message, zmq::recv_flags::none) && message.size() > 0)
    {
        auto* const* const received = static_cast<void* const*>(message.data());
        for (uint64 i = 0; i < message.size() / sizeof(void*); ++i)
        {
            wObject_Release(received[i]);
        }
    }
}

} // namespace ZuBench
