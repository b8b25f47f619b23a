// Input: a job file that a client uploads.
//
// Checks: the file is refused with a reason, or it holds readable documents within the limits of a job. A document that
// `DocumentCheck` accepts is JSON. Bytes that `Deflate` accepts inflate to the stated size.

#include "Fuzz/Support/Check.h"
#include "Fuzz/Support/Input.h"
#include "Host/Store/Archive.h"
#include "Host/Store/ArchiveFile.h"
#include "Host/Store/Deflate.h"
#include "Host/Store/DocumentCheck.h"
#include "ZuApi/Exception.h"

#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace
{

using namespace ZuHost;

std::optional<ArchiveFile::Files> Read(std::string_view bytes)
{
    constexpr char START[] = "What was sent is no job: ";
    try
    {
        return ArchiveFile::Checked("sent.zpjob", bytes);
    }
    catch (Zu::Exception const& exception)
    {
        ZU_FUZZ_CHECK(exception.Status() == Zu::Status::BAD_FORMAT);
        ZU_FUZZ_CHECK(std::strncmp(exception.what(), START, sizeof START - 1) == 0);
        ZU_FUZZ_CHECK(exception.what()[sizeof START - 1] != '\0');
        return std::nullopt;
    }
}

void CheckDocument(std::string_view text)
{
    std::string const fault = DocumentCheck::FaultOf(text);
    ZU_FUZZ_CHECK(!fault.empty() || nlohmann::json::accept(text));
}

void CheckPacking(std::string_view bytes)
{
    constexpr std::size_t SIZE = 100;
    ZU_FUZZ_CHECK(Deflate::Unpack(Deflate::Pack(bytes), bytes.size()) == bytes);
    std::optional<std::string> const unpacked = Deflate::Unpack(bytes, SIZE);
    ZU_FUZZ_CHECK(!unpacked.has_value() || unpacked->size() == SIZE);
}

void CheckFiles(ArchiveFile::Files const& files)
{
    std::size_t total = 0;
    ZU_FUZZ_CHECK(files.size() <= Archive::MAX_ENTRIES);
    for (auto const& [name, bytes] : files)
    {
        total += bytes.size();
        ZU_FUZZ_CHECK(!name.empty() && name.size() <= Archive::MAX_NAME_BYTES);
        ZU_FUZZ_CHECK(name.front() != '/' && ("/" + name + "/").find("/../") == std::string::npos);
        bool const isDocument = name.starts_with("controls/") && name.ends_with(".json");
        ZU_FUZZ_CHECK(!isDocument || DocumentCheck::FaultOf(bytes).empty());
    }
    ZU_FUZZ_CHECK(total <= Archive::MAX_TOTAL_BYTES);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8 const* data, std::size_t size)
{
    std::string_view const bytes = ZuFuzz::Input(data, size).TakeRest();
    CheckDocument(bytes);
    CheckPacking(bytes);
    std::optional<ArchiveFile::Files> const files = Read(bytes);
    if (files.has_value())
    {
        CheckFiles(*files);
        ZU_FUZZ_CHECK(Read(bytes) == files);
    }
    return 0;
}
