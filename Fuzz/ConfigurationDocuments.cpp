// What may stand in a job as the configuration of a protocol: it is loaded as far as it can be, what is saved then is whole,
// and saving what was loaded from a saved document gives that document again.
//
// The first byte of an input names the protocol, the rest is the document.

#include "Fuzz/Support/Check.h"
#include "Fuzz/Support/FormattedLog.h"
#include "Fuzz/Support/Input.h"
#include "Fuzz/Support/ModuleUnderFuzz.h"
#include "Support/FakePersistStore.h"
#include "ZuCommon/PersistDomain.h"

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

/// What is saved of the state that `document` leads to.
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
    // A register map may have taken items in that it does not take one by one: see how it judges what meets.
    ZU_FUZZ_CHECK(second == first || protocol == std::string_view("Registers"));
    return 0;
}
