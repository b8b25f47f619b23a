#include "ZuControl/Control/ControlResourceAdaptor.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuRest/RequestProcessor.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace ZuControl
{

namespace
{

/// Text as a protocol gets it: in one line, as UTF-8.
std::string Dump(nlohmann::json const& part)
{
    return part.dump(-1, ' ', false, nlohmann::json::error_handler_t::strict);
}

} // namespace

/// One read, shared by the caller and the worker: the caller may have stopped waiting when the worker writes here.
struct ControlResourceAdaptor::Reading
{
    std::string const path;
    std::string output;
    int32 status = Zu::Status::SUCCESS;
};

ControlResourceAdaptor::ControlResourceAdaptor(ZuRest::RequestProcessor& usedProcessor)
    : processor(usedProcessor), runner(std::make_unique<Zu::AsyncRunner>())
{
}

ControlResourceAdaptor::~ControlResourceAdaptor()
{
    ZU_GUARD_DESTRUCTOR([this] { runner.reset(); });
}

void ControlResourceAdaptor::Read(std::string const& path, std::string& output, uint64 timeout)
{
    auto const reading = std::make_shared<Reading>(Reading{path, {}, Zu::Status::SUCCESS});
    if (!OperationBegin() && !OperationBegin()) // twice: the worker may clear the flag in between
    {
        ZU_THROW(Zu::Status::BUSY, "Cannot read resource data. Another read operation is already in progress.");
    }
    try
    {
        runner->RunAndWait([this, reading, turn = MakeTurn()] { ReadResource(*reading); }, timeout);
    }
    catch (...)
    {
        // The worker may still be writing into the record: the caller must not read it from here on.
        ZU_LOG_WARNING("Failed to read resource data due to (%s)", Zu::CaughtText().c_str());
        ZU_THROW(Zu::Status::NOT_OFFERED, "Failed to read resource.");
    }
    if (reading->status != Zu::Status::SUCCESS)
    {
        ZU_THROW(reading->status, "Failed to read resource.");
    }
    output = std::move(reading->output);
}

bool ControlResourceAdaptor::OperationBegin()
{
    int32 idle = 0;
    return busy.compare_exchange_strong(idle, 1);
}

int32 ControlResourceAdaptor::OperationFinish()
{
    return busy.exchange(0);
}

void ControlResourceAdaptor::FinishRead() noexcept
{
    if (OperationFinish() != 1)
    {
        ZU_GUARD_BOUNDARY([] {
            ZU_LOG_WARNING(
                "Failed to update the read operation state which may affect any subsequent read operations.");
        });
    }
}

/// A guard that ends the read when its last copy is destroyed; without memory for the guard the read ends at once.
std::shared_ptr<void> ControlResourceAdaptor::MakeTurn()
{
    return {this, [](ControlResourceAdaptor* adaptor) { adaptor->FinishRead(); }};
}

void ControlResourceAdaptor::ReadResource(Reading& reading)
{
    try
    {
        reading.output = TextOf(reading.path);
    }
    catch (...)
    {
        ZU_LOG_WARNING("Exception processing reading resource path due to (%s)", Zu::CaughtText().c_str());
        reading.status = Zu::Status::NOT_FOUND;
    }
}

std::string ControlResourceAdaptor::TextOf(std::string const& path)
{
    std::size_t const mark = path.find("#/");
    std::string const fragment = mark == std::string::npos ? "" : path.substr(mark + 2);
    nlohmann::json document = processor.Read(path.substr(0, mark), nullptr, "");
    if (fragment.empty())
    {
        return Dump(document);
    }
    if (fragment.find('/') == std::string::npos)
    {
        return Dump(document[fragment]); // creates a missing member, as null
    }
    nlohmann::json leaves = document.flatten(); // leaves only, without objects and arrays
    return Dump(leaves["/" + fragment]);
}

} // namespace ZuControl
