#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Commands/Roles.h"
#include "Ctl/Commands/Shown.h"
#include "Ctl/Outcome/Failure.h"
#include "Ctl/Settings/PrivateFile.h"

namespace ZuCtl
{

namespace
{

using nlohmann::json;

void ListTokens(Call& call)
{
    json const document = call.Device().Get("/tokens");
    json tokens = json::array();
    std::vector<std::vector<Cell>> rows;
    for (json const& item : document.value("_embedded", json::object()).value("item", json::array()))
    {
        json const token = WithoutLinks(item);
        bool const hasEnded = token.at("ended");
        rows.push_back({Shown(token, "name"),
                        Shown(token, "role"),
                        {hasEnded ? "ended" : Shown(token, "end"), hasEnded ? Colour::BAD : Colour::PLAIN},
                        Shown(token, "made"),
                        Shown(token, "lastUse")});
        tokens.push_back(token);
    }
    if (!call.PrintedJson(tokens))
    {
        call.Out().Table({"NAME", "ROLE", "END", "MADE", "LAST USE"}, rows);
    }
}

/// The sensor does not show the token again, so it is printed if the file cannot be written.
void SaveToken(Call& call, std::string const& token)
{
    try
    {
        WritePrivateFile(call.Text("--save"), token + '\n', false);
    }
    catch (Failure const&)
    {
        call.Out().Line(token);
        throw;
    }
}

void AddToken(Call& call)
{
    if (call.Has("--save"))
    {
        CheckFileToWrite(call.Text("--save"), false); // before the token is made
    }
    json request{{"name", call.Text("NAME")}, {"role", call.Text("ROLE")}};
    if (call.Has("--end"))
    {
        request["end"] = call.Text("--end");
    }
    json answer = WithoutLinks(call.Device().Change("POST", "/tokens", request));
    if (call.Has("--save"))
    {
        SaveToken(call, answer.at("token"));
        answer.erase("token");
        call.Done("The token of " + call.Text("NAME") + " is in " + call.Text("--save"), answer);
        return;
    }
    if (!call.PrintedJson(answer))
    {
        call.Out().Line(answer.at("token").get<std::string>());
        call.Out().Note("The sensor does not show this token again.");
    }
}

void RevokeToken(Call& call)
{
    std::string const name = call.Text("NAME");
    call.Device().Delete("/tokens/" + Escaped(name));
    call.Done(name + " is revoked");
}

} // namespace

std::vector<Command> TokensCommands()
{
    using enum Argument::Kind;
    using enum Argument::Values;
    Argument const name{WORD, "NAME", "", "the token", TEXT, {}};
    return {
        {"tokens", "list, make and revoke the tokens of programs", "", {}, nullptr},
        {"tokens list", "list the tokens, without their texts", "", {}, &ListTokens},
        {"tokens add",
         "make a token, and show it once",
         "The first token should be that of an administrator: it closes the sensor to programs without one.",
         {name,
          {WORD, "ROLE", "", "what the program may do", CHOICES, RoleNames()},
          {OPTION, "--end", "TIME", "until when, in UTC, such as 2028-01-31T12:00:00Z", TEXT, {}},
          {OPTION, "--save", "FILE", "write the token to a new file that only the caller can read", FILES, {}}},
         &AddToken},
        {"tokens revoke", "end a token at once", "", {name}, &RevokeToken},
    };
}

} // namespace ZuCtl
