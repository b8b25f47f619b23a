#pragma once

#include "wApi/wTypes.h"

#include <memory>
#include <string>

struct ssl_ctx_st;

namespace ZuBench
{

/// A server of Boost.Beast as its examples show it, asynchronous on one thread: every request is answered with `body`.
/// It listens on a free port of the loopback address until the caller destroys the returned object.
std::shared_ptr<void> StartBeastServer(std::string const& body, uint16& port);

/// The same over TLS.
std::shared_ptr<void> StartBeastServer(std::string const& body, uint16& port, ssl_ctx_st* tls);

} // namespace ZuBench
