#pragma once

#include <nlohmann/json.hpp>

namespace ZuCtl
{

/// The document with "***" for each text that is or may have a secret: the values of members whose names have "password",
/// "passphrase", "secret" or "token" in them; tokens ("zc_..."), "Bearer ..." and private keys within any text; the user and
/// the password in an address ("//anna:secret@").
nlohmann::json Masked(nlohmann::json document);

} // namespace ZuCtl
