#include "Plugins/AsciiTcp/AsciiRequest.h"

#include "Plugins/AsciiTcp/AsciiText.h"
#include "ZuApi/Exception.h"

#include <algorithm>
#include <string>

namespace AsciiTcp
{

namespace
{

constexpr std::string_view BLANKS = " \t";

enum class Argument : uint8
{
    NONE,
    OPTIONAL,
    REQUIRED
};

struct Form
{
    std::string_view word;
    AsciiRequest::Verb verb;
    Argument argument = Argument::NONE;
    char const* needed = ""; // names the missing argument in the error text
};

constexpr Form FORMS[] = {
    {"GET", AsciiRequest::Verb::GET, Argument::REQUIRED, "GET needs the name of an output"},
    {"SUBSCRIBE", AsciiRequest::Verb::SUBSCRIBE},
    {"UNSUBSCRIBE", AsciiRequest::Verb::UNSUBSCRIBE},
    {"LIST", AsciiRequest::Verb::LIST},
    {"START", AsciiRequest::Verb::START},
    {"STOP", AsciiRequest::Verb::STOP},
    {"ALIGN", AsciiRequest::Verb::ALIGN, Argument::OPTIONAL},
    {"CLEARALIGN", AsciiRequest::Verb::CLEARALIGN, Argument::OPTIONAL},
    {"LOAD", AsciiRequest::Verb::LOAD, Argument::REQUIRED, "LOAD needs the name of a job"},
    {"TRIGGER", AsciiRequest::Verb::TRIGGER, Argument::OPTIONAL},
    {"DOUT", AsciiRequest::Verb::DOUT, Argument::REQUIRED, "DOUT needs the index of an output and 0 or 1"},
    {"AOUT", AsciiRequest::Verb::AOUT, Argument::REQUIRED, "AOUT needs the index of an output and a current in mA"},
    {"SERIAL", AsciiRequest::Verb::SERIAL, Argument::REQUIRED, "SERIAL needs the index of an output and a text"},
    {"READ", AsciiRequest::Verb::READ, Argument::REQUIRED, "READ needs the path of a resource"},
    {"STATUS", AsciiRequest::Verb::STATUS},
    {"HELP", AsciiRequest::Verb::HELP},
};

std::string_view Trimmed(std::string_view text)
{
    std::size_t const first = text.find_first_not_of(BLANKS);
    if (first == std::string_view::npos)
    {
        return {};
    }
    return text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

bool HasStrangeCharacter(std::string_view text)
{
    return std::any_of(text.begin(), text.end(), [](char const& character) {
        return character != '\t' && !IsPrintable(std::string_view(&character, 1));
    });
}

Form const& FormOf(std::string_view word)
{
    auto const* const form =
        std::find_if(std::begin(FORMS), std::end(FORMS), [word](Form const& known) { return known.word == word; });
    if (form == std::end(FORMS))
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED, "There is no such request; HELP lists them");
    }
    return *form;
}

} // namespace

AsciiRequest AsciiRequest::Parse(std::string_view line)
{
    std::string_view const text = Trimmed(line);
    if (text.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The request is empty");
    }
    if (HasStrangeCharacter(text))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The request has a control character in it");
    }
    std::size_t const wordEnd = std::min(text.find_first_of(BLANKS), text.size());
    Form const& form = FormOf(text.substr(0, wordEnd));
    std::string_view const argument = Trimmed(text.substr(wordEnd));
    if (form.argument == Argument::NONE && !argument.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s takes no argument", std::string(form.word).c_str());
    }
    if (form.argument == Argument::REQUIRED && argument.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s", form.needed);
    }
    return {form.verb, argument};
}

std::string_view AsciiRequest::NameOf(Verb verb)
{
    return std::ranges::find(FORMS, verb, &Form::verb)->word; // each verb has a form
}

ZuCommon::Role AsciiRequest::RoleFor(Verb verb)
{
    switch (verb)
    {
    case Verb::GET:
    case Verb::LIST:
    case Verb::SUBSCRIBE:
    case Verb::UNSUBSCRIBE:
    case Verb::READ:
    case Verb::STATUS:
    case Verb::HELP:
        return ZuCommon::Role::VIEWER;
    default:
        return ZuCommon::Role::OPERATOR;
    }
}

char const* AsciiRequest::Help()
{
    return "GET name | LIST | SUBSCRIBE | UNSUBSCRIBE | START | STOP | ALIGN [id] | CLEARALIGN [id] | LOAD job | "
           "TRIGGER [id] | DOUT index 0/1 | AOUT index mA | SERIAL index text | READ path | STATUS | HELP";
}

} // namespace AsciiTcp
