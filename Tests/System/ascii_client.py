"""A client of the line protocol, and the values that it reads of the simulated part."""

import socket

from host import PATIENCE, Host

OUTPUTS = ["meanZ", "points", "width", "zMax", "zMin"]

# The lower step alone, both steps, the belt in the gap. The values are exact, because all lengths of the part are exact.
PHASES = [{"meanZ": "10.000", "points": "481.000", "width": "60.000", "zMax": "10.000", "zMin": "10.000"},
          {"meanZ": "19.258", "points": "418.000", "width": "60.000", "zMax": "25.000", "zMin": "10.000"},
          {"meanZ": "0.000", "points": "161.000", "width": "20.000", "zMax": "0.000", "zMin": "0.000"}]


def phase_of(frame):
    """The part in view of a frame: 80 frames, 80 frames, 40 frames, then again from the start."""
    position = frame % 200
    return PHASES[0 if position < 80 else 1 if position < 160 else 2]


def data_line(frame):
    return f"DATA {frame} " + " ".join(f"{name}={phase_of(frame)[name]}:1" for name in OUTPUTS)


def ascii_host(*arguments, **options):
    """The host with this protocol alone, on a free port."""
    return Host("--enable", "AsciiTcp", "--param", "AsciiTcp.port=0", *arguments, modbus=False, **options)


class AsciiClient:
    """`with AsciiClient(host.ports["AsciiTcp"]) as client: client.ask("LIST")`"""

    def __init__(self, port, receive_buffer=None):
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
        self.socket.settimeout(PATIENCE)
        if receive_buffer is not None:
            self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
        self.socket.connect(("127.0.0.1", port))
        self.stream = self.socket.makefile("rb")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stream.close()
        self.socket.close()

    def send(self, data):
        self.socket.sendall(data if isinstance(data, bytes) else data.encode())

    def line(self):
        """The next line; None when the server has closed the connection."""
        line = self.stream.readline()
        return line.decode().rstrip("\n") if line else None

    def ask(self, request):
        self.send(request + "\n")
        return self.line()

    def run(self, request):
        """Begins an operation and returns its end."""
        answer = self.ask(request)
        return self.line() if answer == "OK" else answer

    def end_sending(self):
        self.socket.shutdown(socket.SHUT_WR)

    def status(self):
        """The words of STATUS."""
        answer = self.ask("STATUS")
        assert answer.startswith("OK "), answer
        return dict(word.split("=", 1) for word in answer[3:].split(" "))
