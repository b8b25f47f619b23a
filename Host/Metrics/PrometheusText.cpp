#include "Host/Metrics/PrometheusText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace ZuHost
{

namespace
{

constexpr unsigned long long USEC_PER_SECOND = 1'000'000;

char const* TextOf(PrometheusText::Type type)
{
    switch (type)
    {
    case PrometheusText::Type::COUNTER:
        return "counter";
    case PrometheusText::Type::GAUGE:
        return "gauge";
    case PrometheusText::Type::SUMMARY:
        return "summary";
    case PrometheusText::Type::UNTYPED:
        break;
    }
    return "untyped";
}

/// Replaces bytes that are no UTF-8.
std::string ValidText(std::string const& text)
{
    using Json = nlohmann::json;
    return Json::parse(Json(text).dump(-1, ' ', false, Json::error_handler_t::replace)).get<std::string>();
}

/// Escapes the characters that would end `text` early. A quote is escaped only in the value of a label. Other control
/// characters, which some readers take for the end of a line, become blanks.
std::string Escaped(std::string const& text, bool isLabel)
{
    std::string escaped;
    for (char const character : ValidText(text))
    {
        if (character == '\n')
        {
            escaped += "\\n";
            continue;
        }
        if (character == '\\' || (isLabel && character == '"'))
        {
            escaped += '\\';
        }
        escaped += std::iscntrl(static_cast<unsigned char>(character)) != 0 ? ' ' : character;
    }
    return escaped;
}

std::string TextOf(PrometheusText::Labels const& labels)
{
    std::string text;
    for (auto const& [name, value] : labels)
    {
        text += (text.empty() ? "{" : ",") + name + "=\"" + Escaped(value, true) + '"';
    }
    return text.empty() ? text : text + "}";
}

} // namespace

PrometheusText::PrometheusText() = default;
PrometheusText::~PrometheusText() = default;

void PrometheusText::Add(std::string const& name, Type type, std::string const& help, Labels const& labels,
                         std::string const& number, std::string const& suffix)
{
    std::string const sample = name + suffix + TextOf(labels);
    if (sampleNames.insert(sample).second)
    {
        Family& family = families.try_emplace(name, Family{type, help, {}}).first->second;
        family.samples += sample + ' ' + number + '\n';
    }
}

std::string PrometheusText::Write() const
{
    std::string text;
    for (auto const& [name, family] : families)
    {
        text += "# HELP " + name + ' ' + Escaped(family.help, false) + '\n';
        text += "# TYPE " + name + ' ' + TextOf(family.type) + '\n';
        text += family.samples;
    }
    return text;
}

std::string PrometheusText::NameOf(std::string const& key)
{
    std::string name;
    bool wasSmall = false;
    for (char const character : key)
    {
        auto const code = static_cast<unsigned char>(character);
        if (std::isupper(code) != 0 && wasSmall)
        {
            name += '_';
        }
        wasSmall = std::islower(code) != 0 || std::isdigit(code) != 0;
        name += std::isalnum(code) != 0 ? static_cast<char>(std::tolower(code)) : '_';
    }
    return name;
}

void PrometheusText::AddLabel(Labels& labels, std::string const& key, std::string const& value)
{
    std::string name = NameOf(key);
    if (name.empty() || std::isalpha(static_cast<unsigned char>(name.front())) == 0) // names in "__" are reserved
    {
        name = "label_" + name;
    }
    while (std::ranges::any_of(labels, [&name](auto const& label) { return label.first == name; }))
    {
        name += '_';
    }
    labels.emplace_back(std::move(name), value);
}

std::string PrometheusText::Number(double number)
{
    if (!std::isfinite(number))
    {
        return std::isnan(number) ? "NaN" : (number > 0 ? "+Inf" : "-Inf");
    }
    std::array<char, 32> digits; // the longest number has 24 characters
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    return {digits.data(), end};
}

std::string PrometheusText::Seconds(unsigned long long usec)
{
    char text[32];
    std::snprintf(text, sizeof text, "%llu.%06llu", usec / USEC_PER_SECOND, usec % USEC_PER_SECOND);
    return text;
}

} // namespace ZuHost
