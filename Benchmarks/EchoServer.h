#pragma once

#include "wApi/wTypes.h"

#include <cstddef>
#include <memory>
#include <string>

namespace ZuBench
{

/// The minimum of a server: takes any `requestBytes` bytes as a request and sends a fixed answer.
class EchoServer final
{
public:
    /// Starts a server on a free port of the loopback address. It runs until the process ends.
    static std::shared_ptr<void> Start(std::size_t requestBytes, std::string const& answer, uint16& port);
};

} // namespace ZuBench
