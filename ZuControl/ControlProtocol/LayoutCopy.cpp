#include "ZuControl/ControlProtocol/LayoutCopy.h"

#include <utility>

namespace ZuControl::ControlProtocol
{

LayoutCopy::LayoutCopy() = default;
LayoutCopy::~LayoutCopy() = default;

std::vector<EntryRefusal> LayoutCopy::TakeRefusals()
{
    notes.entry = 0;
    return std::exchange(notes.refusals, {});
}

} // namespace ZuControl::ControlProtocol
