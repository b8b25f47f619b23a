#pragma once

#include "wApi/wTypes.h"

#include <openssl/ssl.h>

#include <functional>
#include <string>

namespace ZuTls
{

/// Checks the certificate chain of a peer as it is valid at `utcSeconds`. Returns 1 if it is valid. If not, the reason
/// stays with the connection as a sentence.
int CheckPeer(X509_STORE_CTX& chain, int64 utcSeconds);

/// The sentence that `CheckPeer` has left with the connection. Null if there is none.
std::string const* FaultOfPeer(SSL const& connection);

} // namespace ZuTls
