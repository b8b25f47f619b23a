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
    Deregister("text"); // before the member, to which the base class refers, is destroyed
}

bool SendTextParams::IsValid(std::string_view text)
{
    return !text.empty() && text.size() <= MOST_BYTES && IsPrintable(text);
}

} // namespace AsciiTcp
