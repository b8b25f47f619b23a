#pragma once

#include "Ctl/CommandLine/ParsedWords.h"
#include "Ctl/Connection/Sensor.h"
#include "Ctl/Output/Printer.h"

#include <memory>
#include <string>
#include <vector>

namespace ZuCtl
{

/// What a running command works with: its arguments, the sensor and the output.
class Call final
{
public:
    /// `newCommands` and `newPrinter` outlive the call.
    Call(ParsedWords newParsed, Commands newCommands, Printer& newPrinter);
    ~Call();
    Call(Call const&) = delete;
    Call& operator=(Call const&) = delete;

    bool Has(std::string const& name) const;
    std::string Text(std::string const& name, std::string const& otherwise = "") const;
    std::vector<std::string> Texts(std::string const& name) const;
    /// Throws `Failure` with `ExitStatus::USAGE` if the text is no number from `least` to `most`.
    double Number(std::string const& name, double otherwise, double least, double most) const;
    bool WantsJson() const;

    /// The sensor that the common options and the file of sensors name. Makes it with the first call.
    Sensor& Device();
    /// The text of a secret: from the file that the option `name` names, else asked for on the terminal.
    std::string Secret(std::string const& name, std::string const& question, bool isNew = false) const;
    Printer& Out() noexcept;
    Commands AllCommands() const noexcept;

    /// `document` for programs with `--json`. Returns whether that was the wish.
    bool PrintedJson(nlohmann::json const& document);
    /// Says that a change is done: a line for people, a document for programs.
    void Done(std::string const& text, nlohmann::json document = nlohmann::json::object());

private:
    std::unique_ptr<Sensor> MakeSensor() const;

    ParsedWords parsed;
    Commands commands;
    Printer& printer;
    std::unique_ptr<Sensor> sensor;
};

} // namespace ZuCtl
