#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Outcome/Failure.h"

namespace ZuCtl
{

namespace
{

void ShowDocument(Call& call)
{
    std::string const path = call.Text("PATH");
    if (!path.starts_with('/') || path.find_first_of(" \t\r\n") != std::string::npos)
    {
        throw Failure(ExitStatus::USAGE, "'" + path + "' is no path, such as /controls/ModbusTcp");
    }
    HttpAnswer const answer = call.Device().GetText(path, true);
    if (answer.Header("content-type").find("json") == std::string::npos)
    {
        call.Out().Text(answer.body);
        return;
    }
    call.Out().Json(call.Device().Parse(answer.body));
}

} // namespace

Command GetCommand()
{
    return {"get",
            "show a document of the sensor",
            "zucontrolctl get / shows the links to all documents; with ?schema=true behind a path the document has its "
            "schema.",
            {{Argument::Kind::WORD, "PATH", "", "the path, such as /controls/ModbusTcp", Argument::Values::TEXT, {}}},
            &ShowDocument};
}

} // namespace ZuCtl
