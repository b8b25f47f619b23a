"""A small Modbus TCP client that uses only the standard library and shares no code with the tested server."""

import socket
import struct


class ModbusException(Exception):
    """The server refused a request; `code` is its exception code."""

    def __init__(self, function, code):
        super().__init__(f"function {function} refused with exception code {code}")
        self.code = code


class ModbusClient:
    def __init__(self, port, address="127.0.0.1", timeout=10.0, unit=1, source=None):
        self.socket = socket.create_connection((address, port), timeout=timeout, source_address=source and (source, 0))
        self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.unit = unit
        self.transaction = 0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        self.socket.close()

    def read(self, start, count, function=3):
        """The registers `start` to `start + count - 1`."""
        answer = self.request(struct.pack(">BHH", function, start, count))
        if answer[1] != 2 * count or len(answer) != 2 + 2 * count:
            raise ValueError(f"{count} registers asked for, {len(answer) - 2} bytes received")
        return list(struct.unpack(f">{count}H", answer[2:]))

    def read_bit(self, number, function):
        """A coil (function 1) or a discrete input (function 2), as 0 or 1."""
        return self.request(struct.pack(">BHH", function, number, 1))[2] & 1

    def write(self, start, values):
        """Writes several registers with function 16."""
        pdu = struct.pack(">BHHB", 16, start, len(values), 2 * len(values)) + struct.pack(f">{len(values)}H", *values)
        if self.request(pdu) != struct.pack(">BHH", 16, start, len(values)):
            raise ValueError("the answer to a write does not repeat the request")

    def write_one(self, address, value):
        """Writes one register with function 6."""
        pdu = struct.pack(">BHH", 6, address, value)
        if self.request(pdu) != pdu:
            raise ValueError("the answer to a write does not repeat the request")

    def request(self, pdu):
        """Sends one PDU and returns the PDU of the answer; raises ModbusException for a refusal."""
        self.transaction = (self.transaction + 1) & 0xFFFF
        self.socket.sendall(struct.pack(">HHHB", self.transaction, 0, len(pdu) + 1, self.unit) + pdu)
        transaction, protocol, length, unit = struct.unpack(">HHHB", self.receive(7))
        answer = self.receive(length - 1)
        if (transaction, protocol, unit) != (self.transaction, 0, self.unit):
            raise ValueError("the answer belongs to another request")
        if answer[0] == pdu[0] | 0x80:
            raise ModbusException(pdu[0], answer[1])
        if answer[0] != pdu[0]:
            raise ValueError(f"function {answer[0]} answers function {pdu[0]}")
        return answer

    def receive(self, size):
        data = b""
        while len(data) < size:
            part = self.socket.recv(size - len(data))
            if not part:
                raise ConnectionError("the server closed the connection")
            data += part
        return data


def unsigned(registers):
    """An unsigned number, most significant register first."""
    number = 0
    for register in registers:
        number = number << 16 | register
    return number


def signed(registers):
    number = unsigned(registers)
    bits = 16 * len(registers)
    return number - (1 << bits) if number >> (bits - 1) else number


def text(registers):
    """One character a register."""
    return "".join(chr(register & 0xFF) for register in registers)
