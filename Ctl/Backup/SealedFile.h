#pragma once

#include <string>

namespace ZuCtl
{

/// Encrypts with a key that Argon2id makes of the passphrase. The result tells whether it was changed or cut.
std::string Seal(std::string const& content, std::string const& passphrase);

/// The content of a sealed text. Throws `Failure` with `ExitStatus::LOCAL_FILE`: the text is no backup or of a newer version;
/// the passphrase is wrong or the text was changed; the text was cut.
std::string Unseal(std::string const& sealed, std::string const& passphrase);

} // namespace ZuCtl
