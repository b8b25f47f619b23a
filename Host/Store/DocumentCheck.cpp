#include "Host/Store/DocumentCheck.h"

#include <nlohmann/json.hpp>

namespace ZuHost::DocumentCheck
{

namespace
{

/// Keeps only the first fault.
class Reader final : public nlohmann::json_sax<nlohmann::json>
{
public:
    bool null() override
    {
        return Count();
    }

    bool boolean(bool /*value*/) override
    {
        return Count();
    }

    bool number_integer(number_integer_t /*value*/) override
    {
        return Count();
    }

    bool number_unsigned(number_unsigned_t /*value*/) override
    {
        return Count();
    }

    bool number_float(number_float_t /*value*/, string_t const& /*text*/) override
    {
        return Count();
    }

    bool string(string_t& /*value*/) override
    {
        return Count();
    }

    bool binary(binary_t& /*value*/) override
    {
        return Count();
    }

    bool start_object(std::size_t /*elements*/) override
    {
        return Count() && Descend();
    }

    bool key(string_t& /*value*/) override
    {
        return true;
    }

    bool end_object() override
    {
        --depth;
        return true;
    }

    bool start_array(std::size_t /*elements*/) override
    {
        return Count() && Descend();
    }

    bool end_array() override
    {
        --depth;
        return true;
    }

    bool parse_error(std::size_t /*position*/, std::string const& /*token*/,
                     nlohmann::json::exception const& exception) override
    {
        fault = std::string("it is not valid JSON: ") + exception.what();
        return false;
    }

    std::string fault;

private:
    bool Count()
    {
        if (++values > MAX_VALUES)
        {
            fault = "it has more than " + std::to_string(MAX_VALUES) + " values";
            return false;
        }
        return true;
    }

    bool Descend()
    {
        if (++depth > MAX_DEPTH)
        {
            fault = "it is nested deeper than " + std::to_string(MAX_DEPTH) + " levels";
            return false;
        }
        return true;
    }

    uint32 values = 0;
    uint32 depth = 0;
};

} // namespace

std::string FaultOf(std::string_view text)
{
    if (text.size() > MAX_BYTES)
    {
        return "it is longer than " + std::to_string(MAX_BYTES) + " bytes";
    }
    if (text.find('\0') != std::string_view::npos) // the library takes a zero byte for the end
    {
        return "it has a zero byte";
    }
    Reader reader;
    nlohmann::json::sax_parse(text.begin(), text.end(), &reader);
    return reader.fault;
}

} // namespace ZuHost::DocumentCheck
