#include "Plugins/AsciiTcp/SendTextParams.h"

#include "Plugins/AsciiTcp/AsciiText.h"

namespace AsciiTcp
{

SendTextParams::SendTextParams() : Group("")
{
    Register("text", "Text", text);
}

SendTextParams::~SendTextParams()
{
    Deregister("text"); // the member goes before the base that refers to it
}

bool SendTextParams::IsValid(std::string_view text)
{
    return !text.empty() && text.size() <= MOST_BYTES && IsPrintable(text);
}

} // namespace AsciiTcp
