"""Range images as PCD v0.7 files, and the measurements of their profiles, computed independently of the host."""

import math
import struct

MISSING = -0x80000000
NAN = math.nan


def write_pcd(path, rows):
    """`rows` of equally many (x, y, z) points in metres become an organised binary file of 32-bit floats."""
    width, height = len(rows[0]), len(rows)
    header = (
        "# .PCD v0.7 - Point Cloud Data file format\nVERSION 0.7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 1\n"
        f"WIDTH {width}\nHEIGHT {height}\nVIEWPOINT 0 0 0 1 0 0 0\nPOINTS {width * height}\nDATA binary\n")
    with open(path, "wb") as file:
        file.write(header.encode())
        for row in rows:
            for point in row:
                file.write(struct.pack("<3f", *point))


def read_pcd(path):
    """The rows of an organised binary file with the fields x y z, as 32-bit floats widened."""
    with open(path, "rb") as file:
        data = file.read()
    end = data.index(b"DATA binary\n") + len(b"DATA binary\n")
    header = dict(line.split(" ", 1) for line in data[:end].decode().splitlines() if not line.startswith("#"))
    assert header["FIELDS"] == "x y z" and header["SIZE"] == "4 4 4" and header["TYPE"] == "F F F", header
    width, height = int(header["WIDTH"]), int(header["HEIGHT"])
    points = list(struct.iter_unpack("<3f", data[end:end + 12 * width * height]))
    return [points[row * width:(row + 1) * width] for row in range(height)]


def as_register_value(value):
    """A measurement in thousandths, rounded half away from zero."""
    scaled = value * 1000.0
    return int(scaled + 0.5) if scaled > 0 else int(scaled - 0.5)


def measure(row):
    """The five (value, decision) pairs of a profile, in the order zMax, zMin, width, meanZ, points."""
    valid = [(x * 1000.0, z * 1000.0) for x, y, z in row if not (math.isnan(x) or math.isnan(y) or math.isnan(z))]
    if not valid:
        return [(MISSING, 2)] * 4 + [(0, 1)]
    xs, zs = [x for x, _ in valid], [z for _, z in valid]
    total = 0.0
    for z in zs:
        total += z
    values = [max(zs), min(zs), max(xs) - min(xs), total / len(zs), float(len(zs))]
    return [(as_register_value(value), 1) for value in values]
