#pragma once

#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace ZuHost
{

/// A certificate and its private key as PEM texts. The key is ECDSA on the curve P-256.
struct MadeCertificate
{
    std::string certificatePem;
    std::string keyPem;
};

/// The time in which a certificate is valid, in seconds since 1970.
struct Validity
{
    int64 fromUtcSeconds = 0;
    int64 untilUtcSeconds = 0;
};

/// Makes an authority that signs itself. It may sign certificates of hosts and no further authorities. Throws
/// `Zu::Status::FAILURE` if OpenSSL fails.
MadeCertificate MakeAuthority(std::string const& name, Validity const& validity);

/// Makes a certificate for a server with these names and IP addresses, signed by `authority`. Throws as `MakeAuthority`
/// does, also if the texts of `authority` are none.
MadeCertificate MakeServerCertificate(MadeCertificate const& authority, std::vector<std::string> const& names,
                                      Validity const& validity);

/// Whether the key of `authorityPem` has signed `certificatePem`.
bool IsSignedBy(std::string const& certificatePem, std::string const& authorityPem);

} // namespace ZuHost
