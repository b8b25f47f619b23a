// Input: a document that a client sends for a parameter record.
//
// Checks: a refused document changes nothing. A document that passes the validation can be read. Writing and reading
// the record again gives the same record.
//
// The first byte of an input names the record, 'A' for the first of the list; the rest is the document.

#include "Fuzz/Support/Check.h"
#include "Fuzz/Support/FormattedLog.h"
#include "Fuzz/Support/Input.h"
#include "Plugins/AsciiTcp/AsciiCommands.h"
#include "Plugins/AsciiTcp/AsciiParams.h"
#include "Plugins/ModbusTcp/ModbusParams.h"
#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "ZuControl/ControlProtocol/RegisterProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"
#include "ZuControl/Protocol/ControlResource.h"
#include "ZuControl/Protocol/OutputProperties.h"
#include "ZuRest/JsonText.h"

#include <array>
#include <memory>
#include <nlohmann/json.hpp>

namespace
{

using namespace ZuControl::ControlProtocol;
using Json = nlohmann::json;
using Record = std::unique_ptr<Zu::Params::Group>;
using Serializer = Zu::Properties::JsonSerializer;

template <typename Class>
Record Make()
{
    return std::make_unique<Class>();
}

constexpr std::array RECORDS{
    &Make<RegisterOutputItemArgs>,
    &Make<RegisterOutputsArgs>,
    &Make<StandardOutputItemArgs>,
    &Make<StandardOutputsArgs>,
    &Make<TextIdStandardOutputItemArgs>,
    &Make<TextIdStandardOutputsArgs>,
    &Make<AddBlockParams>,
    &Make<RemoveBlockParams>,
    &Make<UpdateBlockParams>,
    &Make<CompactBlocksParams>,
    &Make<RegisterAssemblyAttributes>,
    &Make<RegisterAssemblyProperties>,
    &Make<ModbusTcp::ModbusParams>,
    &Make<AsciiTcp::AsciiParams>,
    &Make<AsciiTcp::SendTextParams>,
    &Make<ZuControl::Protocol::ControlProperties>,
    &Make<ZuControl::Protocol::DigitalOutputProperties>,
    &Make<ZuControl::Protocol::AnalogOutputProperties>,
    &Make<ZuControl::Protocol::SerialOutputProperties>,
    &Make<ZuControl::Protocol::MarletOutputProperties>,
};

/// Whether `step` succeeded. It may throw only exceptions that become an answer to the client.
template <typename Step>
bool Passes(Step&& step)
{
    try
    {
        step();
        return true;
    }
    catch (Zu::Exception const& exception)
    {
        ZU_FUZZ_CHECK(exception.Status() != Zu::Status::SUCCESS);
    }
    catch (Json::type_error const&)
    {
    }
    return false;
}

/// Validates and then deserializes, as the resources do.
void FillTested(Zu::Params::Group& record, Json const& document)
{
    Json const before = Serializer::Serialize(record);
    if (!Passes([&] { Serializer::Validate(record, document); }))
    {
        ZU_FUZZ_CHECK(Serializer::Serialize(record) == before);
        return;
    }
    ZU_FUZZ_CHECK(Passes([&] { Serializer::Deserialize(record, document); }));
}

/// Checks that the record survives being written and read, in every state.
void CheckRoundTrip(Zu::Params::Group const& record, Record copy)
{
    Json const document = Serializer::Serialize(record);
    Json const read = ZuRest::JsonText::Read(ZuRest::JsonText::Write(document));
    ZU_FUZZ_CHECK(Passes([&] { Serializer::Deserialize(*copy, read); }));
    ZU_FUZZ_CHECK(Serializer::Serialize(*copy) == document);
    ZU_FUZZ_CHECK(Serializer::SerializeSchema(*copy).is_object());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8 const* data, std::size_t size)
{
    static ZuFuzz::FormattedLog const log;
    ZuFuzz::Input input(data, size);
    auto const make = RECORDS[static_cast<uint8>(input.TakeByte() - 'A') % RECORDS.size()];
    Json document;
    if (!Passes([&] { document = ZuRest::JsonText::Read(input.TakeRest()); }))
    {
        return 0;
    }

    Record const tested = make();
    FillTested(*tested, document);
    FillTested(*tested, document); // again, onto the filled record
    CheckRoundTrip(*tested, make());

    Record const untested = make();
    Passes([&] { Serializer::Deserialize(*untested, document); }); // may stop half way, as the reading of a file may
    CheckRoundTrip(*untested, make());
    return 0;
}
