#pragma once

#include <cstddef>
#include <string_view>

/// Recognises clients of other protocols. A web page can make a browser send an HTTP request to any port of its machine.
/// The page chooses the body, and the lines of the body would be requests of the line protocol.
namespace AsciiTcp
{

/// The end of a line that `EndsInHttpVersion` needs: " HTTP/", a version, a carriage return.
inline constexpr std::size_t HTTP_VERSION_BYTES = 32;

/// Whether `line`, without its line feed, ends in " HTTP/" and a version, as the first line of an HTTP request does.
bool EndsInHttpVersion(std::string_view line);

/// Whether `line` begins with "Host:" in capitals or small letters, as a field of an HTTP request does.
bool IsHostField(std::string_view line);

/// Whether `bytes` begin with the hello of a TLS client.
bool IsTlsHello(std::string_view bytes);

} // namespace AsciiTcp
