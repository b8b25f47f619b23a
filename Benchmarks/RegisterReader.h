#pragma once

#include "wApi/wTypes.h"

#include <span>

namespace ZuBench
{

/// A minimal Modbus client: one blocking socket, one request at a time. Throws std::system_error.
class RegisterReader final
{
public:
    explicit RegisterReader(uint16 port);
    ~RegisterReader();

    RegisterReader(RegisterReader const&) = delete;
    RegisterReader& operator=(RegisterReader const&) = delete;

    void Read(uint16 first, std::span<uint16> registers);

private:
    void Receive(std::span<uint8> bytes);

    int socket = -1;
};

} // namespace ZuBench
