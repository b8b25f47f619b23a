#include "Plugins/SparkplugMqtt/Topics.h"

#include "wApi/wTypes.h"

#include <algorithm>
#include <array>

namespace SparkplugMqtt
{

namespace
{

constexpr char const* NAMESPACE = "spBv1.0/";

bool IsForbidden(char character)
{
    auto const byte = static_cast<uint8>(character);
    return byte < 32 || byte == 127 || character == '+' || character == '#' || character == '/';
}

/// The bytes of the UTF-8 sequence at the begin of `text`; 0 if it is none. Overlong forms, surrogates and numbers
/// above 0x10FFFF are none.
std::size_t LengthOfSequence(std::string_view text)
{
    struct Form
    {
        uint8 mask;
        uint8 lead;
        uint32 least;
    };
    static constexpr std::array<Form, 4> FORMS = {
        {{0x80, 0x00, 0}, {0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}}};
    auto const first = static_cast<uint8>(text.front());
    for (std::size_t i = 0; i < FORMS.size(); ++i)
    {
        Form const& form = FORMS[i];
        if ((first & form.mask) != form.lead)
        {
            continue;
        }
        if (text.size() <= i)
        {
            return 0;
        }
        uint32 number = first & static_cast<uint8>(~form.mask);
        for (std::size_t k = 1; k <= i; ++k)
        {
            auto const byte = static_cast<uint8>(text[k]);
            if ((byte & 0xC0) != 0x80)
            {
                return 0;
            }
            number = number << 6 | (byte & 0x3FU);
        }
        bool const isSurrogate = number >= 0xD800 && number <= 0xDFFF;
        return number >= form.least && number <= 0x10FFFF && !isSurrogate ? i + 1 : 0;
    }
    return 0;
}

bool IsUtf8(std::string_view text)
{
    while (!text.empty())
    {
        std::size_t const length = LengthOfSequence(text);
        if (length == 0)
        {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

} // namespace

bool IsValidId(std::string_view id)
{
    return !id.empty() && id.size() <= NodeIds::LONGEST_ID && std::ranges::none_of(id, IsForbidden) && IsUtf8(id);
}

Topics::Topics(NodeIds const& ids, std::string const& primaryHostId)
{
    std::string const group = NAMESPACE + ids.group;
    std::string const device = ids.node + "/" + ids.device;
    nodeBirth = group + "/NBIRTH/" + ids.node;
    nodeDeath = group + "/NDEATH/" + ids.node;
    nodeCommand = group + "/NCMD/" + ids.node;
    deviceBirth = group + "/DBIRTH/" + device;
    deviceData = group + "/DDATA/" + device;
    deviceDeath = group + "/DDEATH/" + device;
    deviceCommand = group + "/DCMD/" + device;
    state = primaryHostId.empty() ? "" : std::string(NAMESPACE) + "STATE/" + primaryHostId;
}

} // namespace SparkplugMqtt
