"""The layers of the sources: a folder includes only its own and lower layers. Compares the #include lines with the table below."""

import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

# From the lowest layer up. A folder includes only folders of its own layer or below, and there are no cycles.
FLOORS = [
    ["Platform/wApi", "Platform/wBeacon", "Platform/ZuApi"],
    ["ZuApi/Properties", "ZuApi/Params", "ZuApi/Threads"],
    ["Platform/ZuCommon", "Platform/ZuPlugin", "Platform/ZuRest", "Platform/ZuVision", "Platform/ZuPipe", "Platform/ZuCore",
     "Platform/ZuScan", "Platform/ZuStdScanners/ZucSensor", "Platform/ZuTls"],
    ["ZuControl/ControlProtocol", "ZuControl/ControlProtocol/DefaultRegisterBlocks"],
    ["ZuControl/Control", "ZuControl/Protocol", "ZuControl/Persistence", "ZuControl/Plc"],
    ["Plugins/Common", "Plugins/AsciiTcp", "Plugins/ModbusTcp", "Plugins/ModbusTcp/Blocks", "Plugins/SparkplugMqtt",
     "Host", "Host/Audit", "Host/Clinic", "Host/CommandLine", "Host/Console", "Host/Description", "Host/Http", "Host/Jobs",
     "Host/Live", "Host/Log",
     "Host/Metrics", "Host/Module", "Host/Operation", "Host/Pcd", "Host/Resources", "Host/Retry", "Host/Security", "Host/Sensor", "Host/Service",
     "Host/Store", "Host/Tls", "Host/Watch",
     "Ctl", "Ctl/Backup", "Ctl/CommandLine", "Ctl/Commands", "Ctl/Connection", "Ctl/Outcome", "Ctl/Output", "Ctl/Settings"],
]
FLOOR_OF = {folder: number for number, floor in enumerate(FLOORS, 1) for folder in floor}
OPEN_TO_ALL = {"ZuControl/Export.h"}

# The interfaces and plain records through which a protocol and the configuration documents see the module. They include
# nothing of the module's own classes.
SEEN_FROM_BELOW = {
    "ZuControl/Control/CommandOrigin.h",
    "ZuControl/Control/ControlInfo.h",
    "ZuControl/Control/ControlModuleEnviron.h",
    "ZuControl/Control/ControlProtocolOperations.h",
    "ZuControl/Control/IControlActionTarget.h",
    "ZuControl/Control/IControlFactory.h",
    "ZuControl/Control/IControlInstance.h",
    "ZuControl/Control/IControlScanResults.h",
    "ZuControl/Control/ServiceNotices.h",
    "ZuControl/Control/ZuEthernetProtocol.h",
}

# ControlModule owns the module's core and the resources that show it, so it stands above both.
OWNER_OF_BOTH = {"ZuControl/Control/ControlModule.h"}

INSTALL = (ROOT / "cmake/Install.cmake").read_text(encoding="utf-8")
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


def sources():
    for folder in FLOOR_OF:
        for path in sorted((ROOT / folder).glob("*")):
            if path.suffix in (".h", ".cpp"):
                yield folder, path


def resolve(name):
    """The path of an included file from the root, or None when it is none of ours."""
    for base in ("", "Platform/"):
        if (ROOT / base / name).is_file():
            return base + name
    return None


def includes():
    """(folder, file, folder of the included file, included file) for each #include line of ours."""
    for folder, path in sources():
        for name in INCLUDE.findall(path.read_text(encoding="utf-8")):
            yield folder, path.relative_to(ROOT).as_posix(), name, resolve(name)


def install_list(name):
    """The entries of a list in cmake/Install.cmake."""
    return re.search(rf"set\({name}\n(.*?)\)", INSTALL, re.DOTALL)[1].split()


def is_private(header):
    if header in install_list("ZU_PUBLIC_HEADERS_OF_PRIVATE_FOLDERS"):
        return False
    return any(header == entry or header.startswith(entry + "/") for entry in install_list("ZU_PRIVATE_HEADERS"))


class Includes(unittest.TestCase):
    def test_every_source_folder_stands_in_the_table(self):
        found = {path.parent.relative_to(ROOT).as_posix() for top in ("Platform", "ZuApi", "ZuControl", "Plugins", "Host", "Ctl")
                 for path in (ROOT / top).rglob("*.cpp")}
        self.assertEqual(found - set(FLOOR_OF), set())

    def test_every_include_is_written_from_the_root_and_found(self):
        self.assertEqual([(file, name) for _, file, name, target in includes() if target is None], [])

    def test_nothing_includes_upward(self):
        wrong = []
        for folder, file, _, target in includes():
            if target is None or target in OPEN_TO_ALL:
                continue
            to = pathlib.PurePosixPath(target).parent.as_posix()
            if FLOOR_OF[to] > FLOOR_OF[folder] and target not in SEEN_FROM_BELOW:
                wrong.append(f"{file} includes {target}")
        self.assertEqual(wrong, [])

    def test_plug_ins_include_nothing_of_the_host(self):
        self.assertEqual([file for folder, file, _, target in includes()
                          if folder.startswith("Plugins/") and (target or "").startswith("Host/")], [])

    def test_the_command_line_tool_and_the_rest_know_nothing_of_each_other(self):
        self.assertEqual([f"{file} includes {target}" for folder, file, _, target in includes()
                          if target is not None and folder.startswith("Ctl") != target.startswith("Ctl/")], [])

    def test_what_is_seen_from_below_includes_nothing_else_of_the_module(self):
        wrong = []
        for _, file, _, target in includes():
            if file in SEEN_FROM_BELOW and (target or "").startswith("ZuControl/Control/") and target not in SEEN_FROM_BELOW:
                wrong.append(f"{file} includes {target}")
        self.assertEqual(wrong, [])

    def test_each_exception_is_needed(self):
        below = {"ZuControl/ControlProtocol", "ZuControl/ControlProtocol/DefaultRegisterBlocks", "ZuControl/Persistence"}
        seen, owners = set(), set()
        for folder, file, _, target in includes():
            if target in SEEN_FROM_BELOW and (folder in below or file in SEEN_FROM_BELOW):
                seen.add(target)
            if file in OWNER_OF_BOTH and (target or "").startswith("ZuControl/Protocol/"):
                owners.add(file)
        self.assertEqual((SEEN_FROM_BELOW - seen, OWNER_OF_BOTH - owners), (set(), set()))

    def test_each_private_header_is_there(self):
        listed = install_list("ZU_PRIVATE_HEADERS") + install_list("ZU_PUBLIC_HEADERS_OF_PRIVATE_FOLDERS")
        self.assertEqual([entry for entry in listed if not (ROOT / entry).exists()], [])

    def test_only_the_libraries_include_private_headers(self):
        wrong = []
        for folder, file, _, target in includes():
            if target is None or not is_private(target):
                continue
            is_strange = folder.startswith(("Ctl", "Host", "Plugins/")) and not target.startswith(folder + "/")
            if is_strange or (file.endswith(".h") and not is_private(file)):
                wrong.append(f"{file} includes {target}")
        self.assertEqual(wrong, [])

    def test_folders_do_not_go_round_in_a_circle(self):
        reach = {folder: set() for folder in FLOOR_OF}
        for folder, file, _, target in includes():
            if target is None or target in OPEN_TO_ALL or target in SEEN_FROM_BELOW or file in OWNER_OF_BOTH:
                continue
            to = pathlib.PurePosixPath(target).parent.as_posix()
            if to != folder:
                reach[folder].add(to)
        changed = True
        while changed:
            changed = False
            for folder, below in reach.items():
                wider = below.union(*(reach[other] for other in below)) if below else below
                if wider != below:
                    reach[folder], changed = wider, True
        self.assertEqual([folder for folder, below in reach.items() if folder in below], [])


if __name__ == "__main__":
    unittest.main()
