"""The client library libmodbus: a Modbus master that shares no code with the tested server."""

import ctypes


class LibmodbusError(Exception):
    """The server refused a request or broke the protocol."""


class Libmodbus:
    def __init__(self, port):
        self.library = ctypes.CDLL("libmodbus.so.5", use_errno=True)
        self.library.modbus_new_tcp.restype = ctypes.c_void_p
        self.library.modbus_strerror.restype = ctypes.c_char_p
        self.context = ctypes.c_void_p(self.library.modbus_new_tcp(b"127.0.0.1", port))
        self._checked(self.library.modbus_set_response_timeout(self.context, 10, 0))
        self._checked(self.library.modbus_connect(self.context))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.library.modbus_close(self.context)
        self.library.modbus_free(self.context)

    def read_registers(self, first, count):
        values = (ctypes.c_uint16 * count)()
        self._checked(self.library.modbus_read_registers(self.context, first, count, values))
        return list(values)

    def read_coils(self, first, count):
        return self._bits(self.library.modbus_read_bits, first, count)

    def read_inputs(self, first, count):
        return self._bits(self.library.modbus_read_input_bits, first, count)

    def write_coil(self, coil, value):
        self._checked(self.library.modbus_write_bit(self.context, coil, value))

    def write_coils(self, first, values):
        self._checked(self.library.modbus_write_bits(self.context, first, len(values), bytes(values)))

    def write_register(self, address, value):
        self._checked(self.library.modbus_write_register(self.context, address, ctypes.c_uint16(value)))

    def mask_write(self, address, and_mask, or_mask):
        self._checked(self.library.modbus_mask_write_register(self.context, address, ctypes.c_uint16(and_mask),
                                                              ctypes.c_uint16(or_mask)))

    def write_and_read(self, write_first, values, read_first, count):
        """Function 23."""
        written, read = (ctypes.c_uint16 * len(values))(*values), (ctypes.c_uint16 * count)()
        self._checked(self.library.modbus_write_and_read_registers(self.context, write_first, len(values), written, read_first,
                                                                   count, read))
        return list(read)

    def _bits(self, operation, first, count):
        values = (ctypes.c_uint8 * count)()
        self._checked(operation(self.context, first, count, values))
        return list(values)

    def _checked(self, result):
        if result == -1:
            raise LibmodbusError(self.library.modbus_strerror(ctypes.get_errno()).decode())
