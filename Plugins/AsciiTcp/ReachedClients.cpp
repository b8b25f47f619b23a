#include "Plugins/AsciiTcp/ReachedClients.h"

namespace AsciiTcp
{

ReachedClients::ReachedClients(uint64 count) : Group("")
{
    Register("clients", "Clients", clients);
    clients.Set(count);
}

ReachedClients::~ReachedClients()
{
    Deregister("clients"); // before the member, to which the base class refers, is destroyed
}

} // namespace AsciiTcp
