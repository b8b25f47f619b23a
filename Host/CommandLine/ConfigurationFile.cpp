#include "Host/CommandLine/ConfigurationFile.h"

#include "Host/CommandLine/NearestName.h"
#include "Host/CommandLine/Options.h"
#include "ZuApi/Exception.h"

#include <cerrno>
#include <charconv>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <system_error>
#include <toml++/toml.h>
#include <utility>

namespace ZuHost
{

namespace
{

using Kind = OptionForm::Kind;
using Scope = OptionForm::Scope;

/// The text of a string or number as on the command line; empty for another type.
std::optional<std::string> TextOf(toml::node const& node)
{
    if (auto const text = node.value_exact<std::string>())
    {
        return *text;
    }
    if (auto const number = node.value_exact<int64_t>())
    {
        return std::to_string(*number);
    }
    if (auto const number = node.value_exact<double>())
    {
        char digits[32];
        auto const end = std::to_chars(std::begin(digits), std::end(digits), *number).ptr;
        return std::string(digits, end);
    }
    return {};
}

/// Turns the tree of a file into options.
class Reader final
{
public:
    explicit Reader(std::string newFile) : file(std::move(newFile))
    {
    }

    ConfigurationFile Read(toml::table const& table)
    {
        ReadKeys(table);
        ConfigurationFile result;
        for (auto& [line, given] : givenByLine)
        {
            result.given.push_back(std::move(given));
        }
        for (auto& [line, fault] : faultsByLine)
        {
            result.faults.push_back(std::move(fault));
        }
        return result;
    }

private:
    void ReadKeys(toml::table const& table)
    {
        for (auto const& [key, node] : table)
        {
            std::string const name(key.str());
            if (OptionForm const* const form = FindForm(name); form != nullptr)
            {
                ReadOption(*form, node);
            }
            else
            {
                RefuseKey(name, node);
            }
        }
    }

    static OptionForm const* FindForm(std::string const& name)
    {
        for (OptionForm const& form : OptionForms())
        {
            if (form.scope != Scope::COMMAND_LINE && form.name == name)
            {
                return &form;
            }
        }
        return nullptr;
    }

    void RefuseKey(std::string const& name, toml::node const& node)
    {
        std::vector<std::string> names;
        for (OptionForm const& form : OptionForms())
        {
            if (form.scope != Scope::COMMAND_LINE)
            {
                names.emplace_back(form.name);
            }
            else if (form.name == name)
            {
                Refuse(node, name, "is an option of the command line alone");
                return;
            }
        }
        std::string const nearest = NearestName(name, names);
        Refuse(node, name, "is no key" + (nearest.empty() ? "" : "; the nearest one is '" + nearest + "'"));
    }

    void ReadOption(OptionForm const& form, toml::node const& node)
    {
        if (form.name == std::string_view("param"))
        {
            ReadParameters(form, node);
        }
        else if (form.kind == Kind::SWITCH)
        {
            ReadSwitch(form, node);
        }
        else if (toml::array const* const list = node.as_array(); list != nullptr && form.kind == Kind::LIST)
        {
            for (toml::node const& value : *list)
            {
                ReadValue(form, value);
            }
        }
        else
        {
            ReadValue(form, node);
        }
    }

    void ReadSwitch(OptionForm const& form, toml::node const& node)
    {
        auto const isOn = node.value_exact<bool>();
        if (!isOn.has_value())
        {
            Refuse(node, form.name, "needs true or false");
        }
        else if (*isOn)
        {
            Give(form, node, form.name, "");
        }
    }

    void ReadValue(OptionForm const& form, toml::node const& node)
    {
        if (auto text = TextOf(node))
        {
            Give(form, node, form.name, *std::move(text));
        }
        else
        {
            Refuse(node, form.name, form.kind == Kind::LIST ? "needs a list of texts" : "needs a text or a number");
        }
    }

    /// The parameters of a type of protocol are a table: [param.ModbusTcp].
    void ReadParameters(OptionForm const& form, toml::node const& node)
    {
        toml::table const* const types = node.as_table();
        if (types == nullptr)
        {
            Refuse(node, form.name, "needs a table for each type of protocol, such as [param.ModbusTcp]");
            return;
        }
        for (auto const& [type, parameters] : *types)
        {
            std::string const typeName = "param." + std::string(type.str());
            if (parameters.is_table())
            {
                ReadParametersOf(form, std::string(type.str()), *parameters.as_table());
            }
            else
            {
                Refuse(parameters, typeName, "needs a table of parameters");
            }
        }
    }

    void ReadParametersOf(OptionForm const& form, std::string const& typeName, toml::table const& parameters)
    {
        for (auto const& [key, node] : parameters)
        {
            std::string const setting = typeName + "." + std::string(key.str());
            auto const isOn = node.value_exact<bool>();
            auto const text = isOn.has_value() ? std::string(*isOn ? "true" : "false") : TextOf(node);
            if (text.has_value())
            {
                Give(form, node, "param." + setting, setting + "=" + *text);
            }
            else
            {
                Refuse(node, "param." + setting, "needs a text, a number, true or false");
            }
        }
    }

    static uint32 LineOf(toml::node const& node)
    {
        return node.source().begin.line;
    }

    std::string LabelOf(toml::node const& node, std::string const& key) const
    {
        return file + ", line " + std::to_string(LineOf(node)) + ": '" + key + "'";
    }

    void Give(OptionForm const& form, toml::node const& node, std::string const& key, std::string text)
    {
        GivenOption given{&form, LabelOf(node, key), std::move(text)};
        try
        {
            Options judge;
            form.apply(given.label, given.text, judge);
            givenByLine.emplace(LineOf(node), std::move(given));
        }
        catch (Zu::Exception const& exception)
        {
            faultsByLine.emplace(LineOf(node), exception.what());
        }
    }

    void Refuse(toml::node const& node, std::string const& key, std::string const& fault)
    {
        faultsByLine.emplace(LineOf(node), LabelOf(node, key) + " " + fault);
    }

    std::string const file;
    // The tables of TOML have the order of their keys.
    std::multimap<uint32, GivenOption> givenByLine;
    std::multimap<uint32, std::string> faultsByLine;
};

/// Throws `std::system_error`.
std::string ContentOf(std::filesystem::path const& file)
{
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    std::string content(ConfigurationFile::MAX_BYTES + 1, '\0');
    if (!stream.read(content.data(), static_cast<std::streamsize>(content.size())) && !stream.eof())
    {
        throw std::system_error(errno == 0 ? EISDIR : errno, std::generic_category());
    }
    content.resize(static_cast<std::size_t>(stream.gcount()));
    return content;
}

} // namespace

ConfigurationFile ConfigurationFile::Read(std::filesystem::path const& file)
{
    try
    {
        std::string const content = ContentOf(file);
        if (content.size() > MAX_BYTES)
        {
            return {{}, {file.string() + " is larger than 1 MiB"}};
        }
        return Reader(file.string()).Read(toml::parse(content));
    }
    catch (toml::parse_error const& error)
    {
        return {{},
                {file.string() + ", line " + std::to_string(error.source().begin.line) + ": " +
                 std::string(error.description())}};
    }
    catch (std::system_error const& error)
    {
        return {{}, {file.string() + " cannot be read: " + error.code().message()}};
    }
}

} // namespace ZuHost
