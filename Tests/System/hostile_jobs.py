"""Job files as a hostile author makes them: a few KiB each, which cost a reader without bounds minutes or gigabytes."""

import pathlib
import sqlite3
import struct
import tempfile
import zlib

PAGE = 1024
LEVELS, CHILDREN = 8, 100
DOCUMENT = "controls/ModbusTcp/config.json"
TABLE = "CREATE TABLE sqlar(name TEXT PRIMARY KEY, mode INT, mtime INT, sz INT, data BLOB)"


def made(*statements, rows=()):
    """The bytes of a database. `rows` are name, claimed size and data; their mode is 0."""
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "file"
        database = sqlite3.connect(path)
        database.execute(f"PRAGMA page_size = {PAGE}")
        database.execute("PRAGMA ignore_check_constraints = ON")
        for statement in statements:
            database.execute(statement)
        database.executemany("INSERT INTO sqlar VALUES(?, 0, 0, ?, ?)", rows)
        database.commit()
        database.close()
        return path.read_bytes()


def slow_expression(terms):
    return "1" + " AND length(hex(zeroblob(10000000)))" * terms


def slow_check():
    """A constraint of the table takes minutes to evaluate."""
    return made(f"{TABLE[:-1]}, CHECK({slow_expression(300)}))", rows=[("a", 0, b"")] * 1)


def hidden_check():
    """Other tables have such constraints. An index over the schema hides them from a reader of the schema."""
    slow = [f"CREATE TABLE slow{number}(a, CHECK({slow_expression(30)}))" for number in range(10)]
    return made(TABLE, *slow, *(f"INSERT INTO slow{number} VALUES(1)" for number in range(10)),
                "CREATE TABLE shape(type TEXT, name TEXT, tbl_name TEXT, rootpage INT, sql TEXT)",
                "INSERT INTO shape SELECT * FROM sqlite_schema WHERE tbl_name = 'sqlar'",
                "CREATE INDEX hides ON shape(type, name, tbl_name, sql)", "PRAGMA writable_schema = ON",
                "UPDATE sqlite_schema SET tbl_name = 'sqlite_master', "
                "sql = 'CREATE INDEX hides ON sqlite_master(type, name, tbl_name, sql)' WHERE name = 'hides'")


def inner_page(head, offset, child):
    """A page of a table's tree whose cells all name `child`; the page starts with the bytes `head`."""
    cells = PAGE - CHILDREN * 5
    page = bytearray(PAGE)
    page[:len(head)] = head
    struct.pack_into(">BHHHBL", page, offset, 5, 0, CHILDREN, cells, 0, child)
    for number in range(CHILDREN):
        struct.pack_into(">H", page, offset + 12 + 2 * number, cells + 5 * number)
        struct.pack_into(">LB", page, cells + 5 * number, child, number + 1)
    return bytes(page)


def endless_tree(root):
    """Each page of a tree names the next page 100 times: 10^16 rows. Page 1 is the root of the schema, page 2 that of the table."""
    file = made(TABLE, rows=[("a", 0, b"")])
    offset = 100 if root == 1 else 0
    start = (root - 1) * PAGE
    leaf = file[start:start + PAGE]
    header = 8 + 2 * struct.unpack_from(">H", leaf, offset + 3)[0]
    leaf = leaf[offset:offset + header] + bytes(offset) + leaf[offset + header:]  # the cells stay at their offsets
    child = len(file) // PAGE + 1
    pages = [inner_page(file[start:start + offset], offset, child)]
    for number in range(1, LEVELS):
        pages.append(inner_page(b"", 0, child + number))
    file = file[:start] + pages[0] + file[start + PAGE:] + b"".join(pages[1:]) + leaf
    return file[:28] + struct.pack(">L", len(file) // PAGE) + file[32:]


def endless_rows():
    return endless_tree(2)


def endless_schema():
    return endless_tree(1)


def claims(rows=28_000, size=16 * 1024 * 1024):
    """Rows that claim this size each and hold one byte of it: 28,000 of them fit into an upload."""
    digits = "0123456789abcdefghijklmnopqrstuvwxyz"
    names = (digits[number // 1296] + digits[number // 36 % 36] + digits[number % 36] for number in range(rows))
    return made(TABLE, rows=[(name, size, b"x") for name in names])


def bomb(*texts):
    """Documents that deflate a thousandfold."""
    return made(TABLE, rows=[(f"controls/Type{number}/config.json", len(text), zlib.compress(text, 9))
                             for number, text in enumerate(texts)])
