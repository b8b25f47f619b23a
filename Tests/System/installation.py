"""The installed tree, and the conditions under which another project is built against it."""

import pathlib
import re
import subprocess

from host import BIN, PATIENCE

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = BIN.parent

# Libraries that only our own sources use. A project that uses an installed ZuControl does not have them.
PRIVATE_DEPENDENCIES = ("boost/", "crack.h", "mosquitto.h", "openssl/", "packer.h", "pb_", "simdjson.h", "sodium.h", "sparkplug_b.pb.h",
                        "sqlite3.h", "systemd/", "toml++/", "unicase.h", "unictype.h", "uninorm.h", "unistr.h", "xxhash.h", "zlib.h")

INCLUDE = re.compile(r"^\s*#\s*include\s+<([^>]+)>", re.MULTILINE)


def run(*words, **options):
    """Returns the output of a program. Raises an AssertionError with the output if the program fails."""
    done = subprocess.run([str(word) for word in words], capture_output=True, text=True, timeout=10 * PATIENCE, **options)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, words))} ended with {done.returncode}:\n{done.stdout}{done.stderr}")
    return done.stdout


def install(prefix):
    run("cmake", "--install", BUILD, "--prefix", prefix)


def package_folder(prefix):
    """The value of PKG_CONFIG_PATH."""
    return next(prefix.glob("lib/**/pkgconfig"))


def library_headers():
    """The headers of other projects and of the C library that our sources include."""
    names = set()
    for top in ("Platform", "ZuApi", "ZuControl", "Plugins", "Host"):
        for path in (ROOT / top).rglob("*"):
            if path.suffix in (".h", ".cpp"):
                names.update(name for name in INCLUDE.findall(path.read_text(encoding="utf-8")) if "." in name)
    return names


def hide_private_dependencies(folder):
    """Fills `folder` with headers that stop the compiler. Returns the flag that makes the compiler find them before the real headers."""
    for name in library_headers():
        if name.startswith(PRIVATE_DEPENDENCIES):
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            (folder / name).write_text(f"#error {name} is private to ZuControl\n")
    return f"-I{folder}"
