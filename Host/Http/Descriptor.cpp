#include "Host/Http/Descriptor.h"

#include <unistd.h>
#include <utility>

namespace ZuHost
{

Descriptor::Descriptor(int ownedNumber) noexcept : number(ownedNumber)
{
}

Descriptor::~Descriptor()
{
    Close();
}

Descriptor::Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, NONE))
{
}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
    if (this != &other)
    {
        Close();
        number = std::exchange(other.number, NONE);
    }
    return *this;
}

int Descriptor::Number() const noexcept
{
    return number;
}

void Descriptor::Close() noexcept
{
    if (number != NONE)
    {
        close(std::exchange(number, NONE)); // whatever it says: the number is free
    }
}

} // namespace ZuHost
