#include "TemplateParams.h"

TemplateParams::TemplateParams() : Group("")
{
    Register("address", "Receiver Address", address);
    Register("port", "Receiver Port", port);
    port.SetMinimum(1); // a request with a smaller value is refused before anything changes
    SetDefaults();
}

TemplateParams::~TemplateParams()
{
    Deregister("port"); // before the members, to which the base class refers, are destroyed
    Deregister("address");
}

void TemplateParams::SetDefaults()
{
    address.Set("127.0.0.1");
    port.Set(9150);
}
