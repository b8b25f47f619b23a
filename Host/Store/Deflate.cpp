#include "Host/Store/Deflate.h"

#include "ZuApi/Exception.h"

#include <array>
#include <memory>
#include <utility>
#include <zlib.h>

namespace ZuHost::Deflate
{

namespace
{

constexpr std::size_t LONGEST_RATIO = 1'032; // a match of 258 bytes takes two bits at least
constexpr uInt STEP_BYTES = 16 * 1024;

} // namespace

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

bool CanUnpack(std::size_t packedSize, std::size_t size)
{
    return packedSize <= size && size / LONGEST_RATIO <= packedSize;
}

std::optional<std::string> Unpack(std::string_view packed, std::size_t size)
{
    if (packed.size() == size)
    {
        return std::string(packed);
    }
    z_stream stream{};
    if (!CanUnpack(packed.size(), size) || inflateInit(&stream) != Z_OK)
    {
        return std::nullopt;
    }
    std::unique_ptr<z_stream, int (*)(z_stream*)> const end(&stream, inflateEnd);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data())); // zlib does not write there
    stream.avail_in = static_cast<uInt>(packed.size());
    std::string bytes;
    std::array<char, STEP_BYTES> step{};
    int result = Z_OK;
    while (result == Z_OK && bytes.size() <= size)
    {
        stream.next_out = reinterpret_cast<Bytef*>(step.data());
        stream.avail_out = STEP_BYTES;
        result = inflate(&stream, Z_NO_FLUSH);
        bytes.append(step.data(), STEP_BYTES - stream.avail_out);
    }
    return result == Z_STREAM_END && bytes.size() == size ? std::optional(std::move(bytes)) : std::nullopt;
}

} // namespace ZuHost::Deflate
