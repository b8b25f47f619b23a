#include "Host/Store/Deflate.h"

#include "ZuApi/Exception.h"

#include <zlib.h>

namespace ZuHost::Deflate
{

std::string Pack(std::string_view bytes)
{
    uLongf length = compressBound(bytes.size());
    std::string packed(length, '\0');
    int const result = compress(reinterpret_cast<Bytef*>(packed.data()), &length,
                                reinterpret_cast<Bytef const*>(bytes.data()), bytes.size());
    if (result != Z_OK)
    {
        ZU_THROW(Zu::Status::FAILURE, "%zu bytes cannot be deflated: %s", bytes.size(), zError(result));
    }
    if (length >= bytes.size()) // the same length marks uncompressed bytes
    {
        return std::string(bytes);
    }
    packed.resize(length);
    return packed;
}

std::optional<std::string> Unpack(std::string_view packed, std::size_t size)
{
    if (packed.size() == size)
    {
        return std::string(packed);
    }
    if (packed.size() > size)
    {
        return std::nullopt;
    }
    std::string bytes(size, '\0');
    uLongf length = size;
    int const result = uncompress(reinterpret_cast<Bytef*>(bytes.data()), &length,
                                  reinterpret_cast<Bytef const*>(packed.data()), packed.size());
    return result == Z_OK && length == size ? std::optional(std::move(bytes)) : std::nullopt;
}

} // namespace ZuHost::Deflate
