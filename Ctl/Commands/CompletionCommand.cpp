#include "Ctl/CommandLine/Call.h"
#include "Ctl/CommandLine/Completion.h"
#include "Ctl/Commands/Commands.h"

namespace ZuCtl
{

namespace
{

void PrintCompletion(Call& call)
{
    bool const isBash = call.Text("SHELL") == "bash";
    call.Out().Text(isBash ? BashCompletion(call.AllCommands()) : ZshCompletion(call.AllCommands()));
}

} // namespace

Command CompletionCommand()
{
    return {"completion",
            "print a script that completes commands and options in a shell",
            "bash: source <(zucontrolctl completion bash). zsh: write the output to a file _zucontrolctl in a folder "
            "of $fpath.",
            {{Argument::Kind::WORD, "SHELL", "", "the shell: bash or zsh", Argument::Values::CHOICES, {"bash", "zsh"}}},
            &PrintCompletion};
}

} // namespace ZuCtl
