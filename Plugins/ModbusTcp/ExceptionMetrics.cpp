#include "Plugins/ModbusTcp/ExceptionMetrics.h"

#include "Plugins/ModbusTcp/ModbusException.h"

namespace ModbusTcp
{

namespace
{

std::string KeyOf(ModbusException exception)
{
    return std::to_string(static_cast<unsigned>(exception));
}

} // namespace

ExceptionMetrics::ExceptionMetrics() : Structure(true)
{
    RegisterSchema("label", label);
    Register(KeyOf(ModbusException::ILLEGAL_FUNCTION), illegalFunctions);
    Register(KeyOf(ModbusException::ILLEGAL_DATA_ADDRESS), illegalAddresses);
    Register(KeyOf(ModbusException::ILLEGAL_DATA_VALUE), illegalValues);
    Register(KeyOf(ModbusException::SERVER_DEVICE_BUSY), busyRefusals);
}

ExceptionMetrics::~ExceptionMetrics()
{
    DeregisterSchema("label"); // before the member, to which the base class refers, is destroyed
}

} // namespace ModbusTcp
