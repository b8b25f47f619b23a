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
    Deregister("clients"); // the member goes before the base that refers to it
}

} // namespace AsciiTcp
