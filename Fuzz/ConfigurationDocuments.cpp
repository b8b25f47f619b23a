// Input: the configuration document of a protocol in a job.
//
// Checks: the load applies as much of the document as it can. The document saved after it is complete. Loading that
// document and saving again gives the same document.
//
// The first byte of an input names the protocol, the rest is the document.

#include "Fuzz/Support/Check.h"
#include "Fuzz/Support/FormattedLog.h"
#include "Fuzz/Support/Input.h"
#include "Fuzz/Support/ModuleUnderFuzz.h"
#include "Support/FakePersistStore.h"
#include "ZuCommon/Persistence.h"

#include <nlohmann/json.hpp>
#include <string>

namespace
{

using Json = nlohmann::json;
using ZuCommon::PersistDomain;

std::string PathOf(char const* protocol)
{
    return std::string("/controls/") + protocol + "/config.json";
}

/// Loads `document` into a new job and returns the document that a save then writes.
std::string Reloaded(ZuFuzz::ModuleUnderFuzz& module, char const* protocol, std::string const& document)
{
    ZuTest::FakePersistStore store;
    store.files[PathOf(protocol)] = document;
    module.Reset();
    module.Controls().LoadPersistDomain(PersistDomain::JOB, store);
    module.Controls().SavePersistDomain(PersistDomain::JOB, store);
    return store.files[PathOf(protocol)];
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8 const* data, std::size_t size)
{
    static ZuFuzz::FormattedLog const log;
    static ZuFuzz::ModuleUnderFuzz module;
    ZuFuzz::Input input(data, size);
    std::size_t const index = input.TakeByte() % ZuFuzz::ModuleUnderFuzz::PROTOCOLS.size();
    char const* const protocol = ZuFuzz::ModuleUnderFuzz::PROTOCOLS[index];

    std::string const first = Reloaded(module, protocol, std::string(input.TakeRest()));
    Json const document = Json::parse(first);
    ZU_FUZZ_CHECK(document.at("version") == "1" && document.at("zu:control").is_object());

    std::string const second = Reloaded(module, protocol, first);
    // A register map may hold items that it would refuse one by one, because of its rules for overlapping items. So the
    // second load may drop some of them.
    ZU_FUZZ_CHECK(second == first || protocol == std::string_view("Registers"));
    return 0;
}
