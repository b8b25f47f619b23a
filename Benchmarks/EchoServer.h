#pragma once

#include "wApi/wTypes.h"

#include <cstddef>
#include <memory>
#include <string>

namespace ZuBench
{

/// The least that a server can do: it takes so many bytes for a request, does not look at them, and sends what it was
/// given.
class EchoServer final
{
public:
    /// On a free port of the loopback address. It runs to the end of the process.
    static std::shared_ptr<void> Start(std::size_t requestBytes, std::string const& answer, uint16& port);
};

} // namespace ZuBench
