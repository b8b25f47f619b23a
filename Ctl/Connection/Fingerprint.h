#pragma once

#include <span>
#include <string>

namespace ZuCtl
{

/// The SHA-256 of bytes as hosts print it: "SHA256:FA:59:...".
std::string FingerprintOf(std::span<unsigned char const> bytes);

/// The fingerprint of the first certificate of a PEM text; empty if it has none.
std::string FingerprintOfPem(std::string const& pem);

/// The form of `FingerprintOf` for a fingerprint in small letters, without "SHA256:" or without colons.
/// Throws `Failure` with `ExitStatus::USAGE` if the text is no SHA-256.
std::string NormalFingerprint(std::string const& text);

} // namespace ZuCtl
