#!/usr/bin/env python3
"""Runs the benchmarks and prints every goal with its figure and what it was measured against.

usage: table.py FOLDER_OF_PROGRAMS [--quick] [--gate] [--list] [--minutes N] [NAME...]       (./bench builds them first)
"""

import argparse
import collections
import json
import math
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

Goal = collections.namedtuple("Goal", "name title pairs limit against gates unit")
"""A goal: for each pair of `pairs`, the first figure divided by the second, or the first alone, is at most `limit`. A third figure
of a pair is shown beside the first. Without a limit the figures are for information."""


def ratio(name, title, against, limit, *pairs, gates=False, unit="ns"):
    return Goal(name, title, pairs, limit, against, gates, unit)


def count(name, title, limit, *figures):
    return Goal(name, title, [(figure, None) for figure in figures], limit, "", True, "")


def amount(name, title, limit, unit, figure, beside, against):
    """The figure itself is held against the limit; `beside` is shown for comparison."""
    return Goal(name, title, [(figure, None, beside)], limit, against, False, unit)


def layouts(name, figure, reference):
    return [(f"{name}/{figure}/bytes:{b}/big:{e}", f"{name}/{reference}/bytes:{b}/big:{e}") for b in (1, 2) for e in (0, 1)]


def fan_out(scene, reference):
    return (f"FanOut/{scene}/Module", f"FanOut/{scene}/{reference}")


DOCUMENTS = ("RegisterMap", "StandardMap", "TextIdMap", "Blocks")


def documents(figure, reference):
    return [(f"Configuration/{kind}/{figure}", f"Configuration/{kind}/{reference}") for kind in DOCUMENTS]


GOALS = [
    count("set-allocations", "allocations a reduced set", 0, "Count/FanOut/Allocations"),
    ratio("fan-out", "fan-out, 16 receivers, 10 % wanted", "plain", 0.25, fan_out("16x10%of100", "Plain")),
    count("fan-out-one", "1 receiver: instructions an item", 60, "Instructions/FanOut/1/Item"),
    count("fan-out-one", "1 receiver: instructions a set", 750, "Instructions/FanOut/1/Set"),
    count("fan-out-one", "1 receiver: locked additions an item", 2, "Instructions/FanOut/1/Locked"),
    ratio("fan-out-one", "1 receiver, 100 items, all wanted", "counts only", None, fan_out("1x100%of100", "CountsOnly")),
    ratio("fan-out-one", "1 receiver, 1,000 items, all wanted", "counts only", 1.35, fan_out("1x100%of1000", "CountsOnly")),
    count("fan-out-all", "16: instructions an item and receiver", 20, "Instructions/FanOut/16/ItemAndReceiver"),
    count("fan-out-all", "16: locked additions an item", 2, "Instructions/FanOut/16/Locked"),
    ratio("fan-out-all", "16 receivers, 100 items: a receiver", "counts only", None, fan_out("16x100%of100", "CountsOnly")),
    ratio("fan-out-all", "16 receivers, 1,000 items: a receiver", "counts only", 0.6, fan_out("16x100%of1000", "CountsOnly")),
    ratio("fan-out-beside", "fan-out beside releasing threads", "plain", 0.5,
          fan_out("16x10%of100/BesideReleases", "Plain")),
    ratio("fan-out-whole", "published to released, CPU", "ZeroMQ", 0.35,
          fan_out("16x10%of100/WholeWay", "ZeroMq")),
    ratio("add", "add a set, in bursts", "double buffer", 2, ("AddInBursts/Dispatcher", "AddInBursts/DoubleBuffer")),
    count("add", "add a set: instructions", 160, "Instructions/Add"),
    count("add-calls", "add a set: system calls", 0, "Count/Add/SystemCalls"),
    count("add-calls", "add a set: allocations", 0, "Count/Add/Allocations"),
    ratio("latency", "added to handed over", "double buffer", 1.15, ("Latency/Dispatcher", "Latency/DoubleBuffer")),
    count("idle", "wakes a second of an idle dispatcher", 500, "IdleWakes/Dispatcher"),
    ratio("operation", "operation started to its end told", "two hops", 1.5, ("Operation/Module", "Operation/TwoHops")),
    count("instructions", "instructions: the fields of a stamp", 130, "Instructions/StampFields"),
    count("instructions", "instructions: value and decision", 100, "Instructions/MeasurementFields"),
    count("instructions", "instructions: 64 bits", 30, "Instructions/Wide"),
    count("instructions", "instructions: 64 bits through a block", 150, "Instructions/SerializeValue"),
    ratio("stamp-block", "stamp block", "byte loop", 0.4, *layouts("Encode/Stamp", "Block", "ByteLoop")),
    count("encoding", "allocations of an encoding", 0, "Count/Encoder/Allocations"),
    ratio("find-blocks", "block by data source", "tree by text", 0.15,
          *[(f"FindBlocks/Layout/{n}", f"FindBlocks/TreeByText/{n}") for n in (100, 1000)]),
    ratio("find-blocks", "block by data source", "in order", 3,
          *[(f"FindBlocks/Layout/{n}", f"FindBlocks/InOrder/{n}") for n in (100, 1000)]),
    count("batch", "allocations a batch", 0, "Count/Batch/Allocations"),
    ratio("place-blocks", "10,000 blocks placed", "1,000 blocks", 40, ("Add/Assembly/10000", "Add/Assembly/1000"), gates=True),
    ratio("replace-block", "a block in the middle of 10,000", "walk", 0.15, ("Replace/Assembly/10000", "Replace/PlainWalk/10000"), gates=True),
    ratio("output-map", "10,000 entries into an output map", "linear test", 0.1,
          ("OutputMap/Add/items:10000/order:0", "OutputMap/LinearTest/items:10000/order:0"), gates=True),
    ratio("output-map", "the same, ids falling", "linear test", 0.1,
          ("OutputMap/Add/items:10000/order:1", "OutputMap/LinearTest/items:10000/order:1")),
    count("record-size", "bytes of a record of five", 1024, "Count/Record/Bytes"),
    count("record-size", "allocations of a record of five", 3, "Count/Record/Allocations"),
    ratio("record", "a record of five made", "plain record", 0.15, ("Build/Record", "Build/Plain")),
    ratio("record", "a record of five made", "JSON object", 0.5, ("Build/Record", "Build/JsonObject")),
    ratio("load", "10,000 entries loaded", "parse", 1.6, *documents("Load", "Parse")),
    ratio("save", "10,000 entries saved", "tree, dumped", 1.2, *documents("Save", "BuildAndDump")),
    ratio("preview", "10,000 entries moved, in a preview", "the change", 3,
          *[(f"Preview/{kind}/Preview", f"Preview/{kind}/Change") for kind in ("Blocks", "StandardMap", "RegisterMap")]),
    ratio("validate", "a record validated", "JSON Schema", 0.3, ("Validate/Record", "Validate/JsonSchema"), gates=True),
    count("memory", "MiB of 10,000 entries", 19, *[f"Configuration/{kind}/Memory/iterations:1:MiB" for kind in DOCUMENTS]),
    ratio("resource", "a resource read", "tree, dumped", 1.3,
          *[(f"ReadResource/Nodes/{n}", f"ReadResource/TreeAndDump/{n}") for n in (10, 1000)]),
    ratio("http", "HTTP GET, CPU of the server", "Beast", 1.4, ("HttpGet/Host", "HttpGet/Beast")),
    ratio("http", "the same, a document made each time", "Beast", 1.6, ("HttpGet/HostDocument", "HttpGet/Beast")),
    ratio("http", "HTTPS GET, CPU of the server", "Beast over TLS", 1.4, ("HttpGetTls/Host", "HttpGetTls/Beast")),
    ratio("modbus", "Modbus read, CPU of the server", "libmodbus", 1.0, ("ModbusRead/Server", "ModbusRead/Libmodbus")),
    ratio("modbus", "Modbus read, CPU of the server", "least", 1.5, ("ModbusRead/Server", "ModbusRead/Least")),
    ratio("sparkplug", "a frame of 20 metrics into the queue", "nanopb", 1.5,
          ("Sparkplug/Frame/Handler", "Sparkplug/Frame/ByHand")),
    amount("console", "the console's files, transferred", 150, "kB", "Console/Transfer", "Console/TransferPlain", "plain"),
    amount("console", "from the begin to the first number", 1e9, "ns", "Console/FirstNumber", "Console/EmptyPage", "/health"),
    amount("console", "CPU of the host for one Live viewer", 3, "%", "Console/CpuOfViewer", "Console/CpuWithout", "no viewer"),
    ratio("console", "fan-out of a profile, 10 viewers", "no viewer", 1.05, ("Console/FanOutWithViewers", "Console/FanOut")),
    ratio("console", "heap of the Live view after a while", "at begin", 1.2, ("Console/HeapAtEnd", "Console/HeapAtBegin"), unit="MiB"),
    ratio("log", "a log line that nobody wants", "relaxed load", 3, ("Log/DisabledLine", "Log/RelaxedLoad")),
]

# Which figures a program gives, by the beginning of their names, and how many rounds it makes, in a quick run and else.
CONTESTS = {
    "FanOutBenchmark": (("FanOut/",), 40, 200),
    "DispatcherBenchmark": (("AddInBursts/", "Latency/", "IdleWakes/"), 60, 300),
    "OperationsBenchmark": (("Operation/",), 500, 3000),
    "HttpServerBenchmark": (("HttpGet/", "HttpGetTls/"), 10, 40),
    "ModbusServerBenchmark": (("ModbusRead/",), 10, 40),
    "Counts": (("Count/",), None, None),
}
ENCODER_INSTRUCTIONS = "EncoderInstructions"
FAN_OUT_INSTRUCTIONS = "FanOutInstructions"
MODEL = "ModelBenchmarks"  # all other figures
CONSOLE = "console.mjs"    # runs the host and a browser

SECONDS_AT_MOST = 600  # for one program: several times what the slowest one takes


def program_of(figure):
    if figure.startswith(("Instructions/FanOut/", "Instructions/Add")):
        return FAN_OUT_INSTRUCTIONS
    if figure.startswith("Console/"):
        return CONSOLE
    if figure.startswith("Instructions/"):
        return ENCODER_INSTRUCTIONS
    for program, (beginnings, _, _) in CONTESTS.items():
        if figure.startswith(beginnings):
            return program
    return MODEL


def figures_of(goal):
    return [figure for pair in goal.pairs for figure in pair if figure is not None]


def fail(text):
    sys.stderr.write(text + "\n")
    sys.exit(2)


def run(command, seconds=SECONDS_AT_MOST, **environment):
    """Returns the output of a command. Ends the program if the command fails or does not end in time."""
    try:
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=seconds,
                              env=os.environ | environment)
    except subprocess.TimeoutExpired:
        fail(f"bench: {' '.join(command)} has not come to its end within {seconds} seconds")
    if done.returncode != 0:
        sys.stderr.write(done.stderr)
        fail(f"bench: {' '.join(command)} failed with exit status {done.returncode}")
    return done.stdout


def run_contest(folder, program, quick):
    rounds = CONTESTS[program][1 if quick else 2]
    output = run([str(folder / program)] + ([str(rounds)] if rounds else []))
    return {name: float(value) for name, value in re.findall(r"^figure (\S+) (\S+)$", output, re.MULTILINE)}


def run_console(folder, quick, minutes):
    """The CPU for a viewer is what the host takes more than without one."""
    root = pathlib.Path(__file__).resolve().parents[1]
    run([str(root / "scripts/node-packages"), str(root / "Tests/Node/browser")])
    words = ["node", str(root / "Benchmarks" / CONSOLE), *(["--quick"] if quick else [])]
    words += ["--minutes", str(minutes)] if minutes else []
    output = run(words, SECONDS_AT_MOST + 60 * (minutes or 0), ZU_BIN=str(folder.resolve()), NO_PROXY="*")
    figures = {name: float(value) for name, value in re.findall(r"^figure (\S+) (\S+)$", output, re.MULTILINE)}
    return figures | {"Console/CpuOfViewer": max(0.0, figures["Console/CpuWith"] - figures["Console/CpuWithout"])}


def count_instructions(function, *command):
    """(instructions, locked instructions) of all calls of a function, on the thread that calls it."""
    with tempfile.NamedTemporaryFile() as profile:
        run(["valgrind", "--tool=callgrind", "--collect-bus=yes", f"--callgrind-out-file={profile.name}",
             f"--toggle-collect={function}*", *map(str, command)])
        totals = re.search(r"^totals: (\d+) ?(\d*)$", pathlib.Path(profile.name).read_text(), re.MULTILINE)
        return int(totals.group(1)), int(totals.group(2) or 0)


def run_encoder_instructions(folder):
    """The instructions of one encoding of each kind. A function of its own runs each kind a thousand times."""
    kinds = ("StampFields", "MeasurementFields", "StampBlock", "MeasurementBlock", "Wide", "SerializeValue")
    return {f"Instructions/{kind}": count_instructions(f"Measured{kind}", folder / ENCODER_INSTRUCTIONS)[0] / 1000 for kind in kinds}


def run_fan_out_instructions(folder):
    """An item costs a ninetieth of what a set of 100 items costs more than a set of 10; a set costs the rest. A function of its own
    runs a hundred times."""
    program = folder / FAN_OUT_INSTRUCTIONS
    figures = {"Instructions/Add": count_instructions("MeasuredAdd", program, 1, 1)[0] / 100}
    for receivers in (1, 16):
        few, many = (count_instructions("MeasuredFanOut", program, receivers, items) for items in (10, 100))
        item, locked = ((more - less) / 90 / 100 for less, more in zip(few, many))
        locked = round(locked, 2)  # a lock that two threads want at once now and then is no part of an item
        figures.update({f"Instructions/FanOut/{receivers}/Item": item,
                        f"Instructions/FanOut/{receivers}/ItemAndReceiver": item / receivers,
                        f"Instructions/FanOut/{receivers}/Set": few[0] / 100 - 10 * item,
                        f"Instructions/FanOut/{receivers}/Locked": locked})
    return figures


def run_model(folder, wanted, quick):
    """The least of several repetitions, which come in random order: a machine that is not idle makes figures larger only."""
    names = {name.removesuffix(":MiB") for name in wanted}
    pattern = "^(" + "|".join(re.escape(name) for name in sorted(names)) + ")$"
    output = run([str(folder / MODEL), f"--benchmark_filter={pattern}", "--benchmark_format=json",
                  f"--benchmark_repetitions={3 if quick else 7}", f"--benchmark_min_time={0.02 if quick else 0.1}",
                  "--benchmark_enable_random_interleaving=true"])
    nanoseconds = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
    figures = collections.defaultdict(lambda: math.inf)
    for one in json.loads(output)["benchmarks"]:
        if one.get("error_occurred"):
            fail(f"bench: {one['name']}: {one['error_message']}")
        if one["run_type"] == "iteration":
            name = one["run_name"]
            figures[name] = min(figures[name], one["cpu_time"] * nanoseconds[one["time_unit"]])
            if "MiB" in one:
                figures[name + ":MiB"] = min(figures[name + ":MiB"], one["MiB"])
    return dict(figures)


def measure(folder, goals, quick, minutes):
    wanted = {figure for goal in goals for figure in figures_of(goal)}
    figures = {}
    for program in sorted({program_of(figure) for figure in wanted}):
        if program != CONSOLE and not (folder / program).exists():
            fail(f"bench: {folder / program} is not built; scripts/install-dependencies bench, then ./bench")
        print(f"running {program} ...", end="", file=sys.stderr, flush=True)
        began = time.monotonic()
        if program == ENCODER_INSTRUCTIONS:
            figures.update(run_encoder_instructions(folder))
        elif program == FAN_OUT_INSTRUCTIONS:
            figures.update(run_fan_out_instructions(folder))
        elif program == CONSOLE:
            figures.update(run_console(folder, quick, minutes))
        elif program == MODEL:
            figures.update(run_model(folder, {figure for figure in wanted if program_of(figure) == MODEL}, quick))
        else:
            figures.update(run_contest(folder, program, quick))
        print(f" {time.monotonic() - began:.0f} s", file=sys.stderr)
    missing = wanted - figures.keys()
    if missing:
        fail("bench: no figure for " + ", ".join(sorted(missing)))
    return figures


def shown(value, unit):
    if unit == "":
        return f"{value:.4g}"
    if unit in ("kB", "%", "MiB"):
        return f"{value:.3g} {unit}"
    for factor, name in ((1e6, "ms"), (1e3, "us"), (1, "ns")):
        if value >= factor or factor == 1:
            return f"{value / factor:.3g} {name}"
    return None


def judge(goal, figures):
    """(figure, reference or None, what is held against the limit, the same of the lower deciles or None): of several pairs the worst."""
    judged = []
    for figure, reference, *beside in goal.pairs:
        value = figures[figure]
        if beside:
            judged.append((value, figures[beside[0]], value, None))
            continue
        base = figures[reference] if reference else None
        low, low_base = figures.get(f"{figure}:decile"), figures.get(f"{reference}:decile")
        judged.append((value, base, value / base if base is not None else value, low / low_base if low and low_base else None))
    return max(judged, key=lambda one: one[2])


def machine():
    """Describes the machine, since the figures depend on it."""
    text = pathlib.Path("/proc/cpuinfo").read_text()
    model = re.search(r"^model name\s*: (.*)$", text, re.MULTILINE)
    load = os.getloadavg()[0]
    lines = [f"{os.cpu_count()} cores, {model.group(1) if model else 'unknown processor'}; load {load:.1f} at the beginning"]
    if load > 0.5:
        lines.append("The machine is not idle: figures that do not gate may be off.")
    return lines


def verdict(goal, held):
    if goal.limit is None:
        return "for information"
    return ("met" if held <= goal.limit else "MISSED") + (", gates" if goal.gates else "")


def limit_text(goal):
    if goal.limit is None:
        return ""
    return f"{goal.limit:g}" if len(goal.pairs[0]) == 2 else shown(goal.limit, goal.unit).replace(" ", "")


def print_table(goals, figures):
    """Returns False if a gating goal is missed."""
    row = "{:<15} {:<37} {:>9}  {:<13} {:>9} {:>8} {:>8} {:>7}  {}"
    print(row.format("goal", "what", "figure", "against", "its", "ratio", "decile", "at most", ""))
    holds = True
    for goal in goals:
        value, base, held, held_low = judge(goal, figures)
        holds = holds and not (goal.gates and held > goal.limit)
        print(row.format(goal.name, goal.title, shown(value, goal.unit), goal.against, shown(base, goal.unit) if base else "",
                         f"{held:.3f}" if base and held != value else "", f"{held_low:.3f}" if held_low else "",
                         limit_text(goal), verdict(goal, held)))
    return holds


def select(names, gate):
    programs = set(CONTESTS) | {ENCODER_INSTRUCTIONS, FAN_OUT_INSTRUCTIONS, MODEL, CONSOLE}
    unknown = [name for name in names if name not in programs and name not in {goal.name for goal in GOALS}]
    if unknown:
        fail(f"bench: there is no goal or program '{unknown[0]}'; see ./bench --list")

    def is_named(goal):
        return not names or goal.name in names or any(program_of(figure) in names for figure in figures_of(goal))

    return [goal for goal in GOALS if is_named(goal) and (goal.gates or not gate)]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--gate", action="store_true")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--minutes", type=float)
    parser.add_argument("names", nargs="*")
    options = parser.parse_intermixed_args()
    goals = select(options.names, options.gate)
    if options.list:
        for goal in goals:
            print(f"{goal.name:<15} {program_of(goal.pairs[0][0]):<22} {goal.title}"
                  + (f", against: {goal.against}" if goal.against else "") + (" (gates)" if goal.gates else ""))
        return 0
    about = machine()
    figures = measure(options.folder, goals, options.quick or options.gate, options.minutes)
    print("\n".join(about))
    return 0 if print_table(goals, figures) else 1


if __name__ == "__main__":
    sys.exit(main())
