#pragma once

#include "ZuControl/Control/ScanOutputPlan.h"
#include "ZuCore/ResultSet.h"
#include "wApi/wTypes.h"

#include <zmq.hpp>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace ZuBench
{

/// A fan-out over ZeroMQ: a pair of sockets within the process and a thread for each receiver. A message holds the
/// parts of a reduced set, with a reference to each.
class ZeroMqFanOut final
{
public:
    ZeroMqFanOut(uint64 receivers, std::vector<std::string> const& sources);
    ~ZeroMqFanOut();

    ZeroMqFanOut(ZeroMqFanOut const&) = delete;
    ZeroMqFanOut& operator=(ZeroMqFanOut const&) = delete;

    void Process(ZuCore::ResultSet set);

private:
    void Receive(std::string const& address);

    zmq::context_t context{0};                               // no I/O thread: nothing leaves the process
    std::unique_ptr<ZuControl::ScanOutputPlan const> wanted; // the same for all
    std::vector<void*> parts;                                // of the set that is being sent
    std::vector<zmq::socket_t> sockets;
    std::vector<std::thread> threads;
};

} // namespace ZuBench
