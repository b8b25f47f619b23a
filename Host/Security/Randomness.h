#pragma once

#include <string>
#include <string_view>

/// Random secrets and their fingerprints, by libsodium.
namespace ZuHost::Randomness
{

/// Makes the library ready. Any thread may call, any number of times; every function of this folder that uses the
/// library calls it. Throws `Zu::Status::FAILURE` if the system offers no random numbers.
void Prepare();

/// Returns 256 random bits as 43 characters of the URL-safe base64 alphabet.
std::string Secret();

/// Returns `count` random characters from `alphabet`, each with the same probability.
std::string Characters(std::size_t count, std::string_view alphabet);

/// Returns the BLAKE2b-256 hash of a random secret, in hexadecimal digits. A secret of 256 bits needs no slow hash.
std::string Fingerprint(std::string_view secret);

/// Whether the texts are equal, in a time that depends only on their lengths.
bool AreEqual(std::string_view one, std::string_view other) noexcept;

} // namespace ZuHost::Randomness
