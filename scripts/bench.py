#!/usr/bin/env python3
"""Runs the benchmarks of a Release build and prints every figure against its goal.

    cmake --preset release && cmake --build --preset release
    python3 scripts/bench.py             # all figures, exit 1 when a goal fails
    python3 scripts/bench.py --readme    # the same, and the README's table rewritten
    python3 scripts/bench.py --quick     # a short run that only shows the benchmarks work

A pair's overhead is the body's time minus the time of the bare SDK calls it
makes, both measured in the same run (medians of interleaved repetitions, CPU
time), so that a loaded machine slows both sides alike. Under callgrind
(when valgrind is installed) the same pairs give the plug-in's own
instructions per call: everything the body executes outside the SDK
libraries, minus what the bare side executes outside them (the harness).
"""

import argparse
import datetime
import json
import os
import platform
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
FULL_CATALOGUE = 186  # script functions of the whole catalogue
SDK_LIBRARIES = ("libICPDAS_USBIO.so", "libPACSDK.so")

# Goals, in nanoseconds for the pairs' overheads.
PAIR_GOALS = {"scalar": 50.0, "vector": 500.0}
# The pairs, in the order the benchmark defines them: name -> goal kind.
PAIRS = [
    ("ICPUSB_DO_ReadValue", "scalar"),
    ("ICPUSB_DO_WriteValue", "scalar"),
    ("ICPUSB_DI_ReadChannelValue", "scalar"),
    ("ICPCOM_SendCmd", "scalar"),
    ("ICPUSB_DO_GetPowerOnEnable", "vector"),
    ("ICPUSB_AI_ReadValueAnalog", "vector"),
    ("ICPUSB_AI_SetChCJCOffsets", "vector"),
    ("ICPUSB_AI_ReadValueAnalogWithChSta", "vector"),
    ("ICPUSB_ListDevice", "vector"),
    ("16-number vector argument", "vector"),
]
SHAPES = {
    "ICPUSB_DO_ReadValue": "scalar getter",
    "ICPUSB_DO_WriteValue": "scalar setter",
    "ICPUSB_DI_ReadChannelValue": "composed body",
    "ICPCOM_SendCmd": "serial call",
    "ICPUSB_DO_GetPowerOnEnable": "16 Booleans (USB2045)",
    "ICPUSB_AI_ReadValueAnalog": "8 reals (USB2019)",
    "ICPUSB_AI_SetChCJCOffsets": "8 reals in (USB2019)",
    "ICPUSB_AI_ReadValueAnalogWithChSta": "8 x 2 matrix (USB2019)",
    "ICPUSB_ListDevice": "8 x 2 table",
    "16-number vector argument": "check + conversion, no SDK",
}
HELP_GOAL_US = 100.0
START_GOAL_US = 2000.0
HEAP_GROWTH_GOAL = 64 * 1024  # bytes: far below one allocation per call


def run(cmd, **kw):
    return subprocess.run(cmd, check=True, text=True, **kw)


def benchmark_json(binary, args):
    with tempfile.NamedTemporaryFile(suffix=".json", delete=False) as out:
        path = out.name
    try:
        done = subprocess.run([binary, "--benchmark_out=" + path, "--benchmark_out_format=json"] + args,
                              stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        if done.returncode != 0:
            sys.stderr.write(done.stderr)
            sys.exit(f"bench.py: {binary} failed")
        with open(path) as f:
            return json.load(f)["benchmarks"]
    finally:
        os.unlink(path)


def medians(benchmarks):
    """name -> the median run (or the only run) of each benchmark."""
    out = {}
    for b in benchmarks:
        name = b.get("run_name", b["name"])
        if b.get("aggregate_name") == "median" or (b.get("run_type") == "iteration" and name not in out):
            out[name] = b
    return out


def ns(b, key="cpu_time"):
    scale = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}[b.get("time_unit", "ns")]
    return b[key] * scale


# --- callgrind: instructions outside the SDK libraries ---

def parse_callgrind(path):
    """(name of the dump, total instructions, instructions spent in SDK calls made from outside the SDK)."""
    names = {"ob": {}, "fn": {}}
    name = None
    total = 0
    in_sdk = 0
    ob = fn_ob = callee_ob = None
    pending_call = False

    def compressed(kind, text):
        m = re.match(r"\((\d+)\)(?: (.*))?", text)
        if not m:
            return text
        if m.group(2) is not None:
            names[kind][m.group(1)] = m.group(2)
        return names[kind].get(m.group(1), "")

    def is_sdk(obj):
        return obj is not None and os.path.basename(obj) in SDK_LIBRARIES

    with open(path) as f:
        for line in f:
            line = line.rstrip("\n")
            if line.startswith("desc: Trigger: Client Request: "):
                name = line.split("Client Request: ", 1)[1]
            elif line.startswith("totals:"):
                total = int(line.split()[1])
            elif line.startswith("ob="):
                ob = compressed("ob", line[3:])
            elif line.startswith("fn="):
                fn_ob = ob
                callee_ob = None
            elif line.startswith("cob="):
                callee_ob = compressed("ob", line[4:])
            elif line.startswith("calls="):
                pending_call = True
            elif pending_call and line and (line[0].isdigit() or line[0] in "+-*"):
                cost = int(line.split()[1]) if len(line.split()) > 1 else 0
                target = callee_ob if callee_ob is not None else fn_ob
                if is_sdk(target) and not is_sdk(fn_ob):
                    in_sdk += cost
                pending_call = False
                callee_ob = None
    return name, total, in_sdk


def instruction_counts(binary):
    """name -> (own instructions per call, total instructions per call), from a callgrind run."""
    if shutil.which("valgrind") is None:
        return None, "valgrind is not installed: no instruction counts"
    folder = tempfile.mkdtemp(prefix="icp-callgrind-")
    try:
        out = run(["valgrind", "--quiet", "--tool=callgrind", "--collect-atstart=no",
                   "--callgrind-out-file=" + os.path.join(folder, "cg.out"), binary, "--instructions"],
                  capture_output=True)
        calls = int(re.search(r"(\d+) calls per dump", out.stdout).group(1))
        counts = {}
        for entry in os.listdir(folder):
            name, total, in_sdk = parse_callgrind(os.path.join(folder, entry))
            if name:
                counts[name] = ((total - in_sdk) / calls, total / calls)
        return counts, None
    finally:
        shutil.rmtree(folder, ignore_errors=True)


# --- the report ---

def machine():
    model = platform.processor() or platform.machine()
    try:
        with open("/proc/cpuinfo") as f:
            for line in f:
                if line.startswith("model name"):
                    model = line.split(":", 1)[1].strip()
                    break
    except OSError:
        pass
    return f"{model}, {os.cpu_count()} cores"


def verdict(ok):
    return "ok" if ok else "MISSED"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", default=os.path.join(ROOT, "build", "release"),
                        help="the build folder (default: build/release)")
    parser.add_argument("--quick", action="store_true",
                        help="a short run that shows the benchmarks work; goals are printed, not enforced")
    parser.add_argument("--readme", action="store_true", help="rewrite the README's table of figures")
    parser.add_argument("--repetitions", type=int, default=9)
    args = parser.parse_args()

    binary = os.path.join(args.build, "bin", "plugin_bench")
    if not os.path.exists(binary):
        sys.exit(f"bench.py: {binary} is missing; build the release preset first")
    if args.quick:
        timing = ["--benchmark_min_time=0.002", "--benchmark_repetitions=1"]
        calls = "--calls=16000"
    else:
        timing = ["--benchmark_min_time=0.1", f"--benchmark_repetitions={args.repetitions}",
                  "--benchmark_enable_random_interleaving=true", "--benchmark_report_aggregates_only=true"]
        calls = "--calls=1000000"

    timed = medians(benchmark_json(binary, ["--benchmark_filter=-Million"] + timing))
    memory = medians(benchmark_json(binary, ["--benchmark_filter=Million", calls]))
    counts, counts_note = instruction_counts(binary)

    rows = []  # (figure, measured, goal, ok)
    for name, kind in PAIRS:
        bare, body = timed[name + "/bare"], timed[name + "/body"]
        overhead = ns(body) - ns(bare)
        goal = PAIR_GOALS[kind]
        detail = f"{ns(bare):.0f} -> {ns(body):.0f} ns"
        if counts and name + "/body" in counts:
            own = counts[name + "/body"][0] - counts[name + "/bare"][0]
            detail += f", {own:.0f} instr"
        allocs = body.get("allocs", 0.0) - bare.get("allocs", 0.0)
        detail += f", {allocs:+.0f} allocs"
        rows.append((f"{name} ({SHAPES[name]})", f"{overhead:.0f} ns ({detail})", f"<= {goal:.0f} ns",
                     overhead <= goal))

    helps = timed["EveryHelpRecord"]
    functions = int(helps.get("functions", FULL_CATALOGUE))
    help_us = ns(helps) / 1e3
    scaled = help_us * FULL_CATALOGUE / functions
    help_detail = f"{help_us:.1f} us for {functions}"
    if counts and "EveryHelpRecord/body" in counts:
        help_detail += f", {counts['EveryHelpRecord/body'][1] / functions:.0f} instr each"
    rows.append((f"every help record, scaled to {FULL_CATALOGUE} functions",
                 f"{scaled:.1f} us ({help_detail})", f"< {HELP_GOAL_US:.0f} us", scaled < HELP_GOAL_US))

    # The process's CPU time, start to exit: its own work whatever the load.
    # The wall time to its first byte, and the same for a program that only
    # prints, show what the machine adds.
    start = timed["IcphostStartToFirstValue/manual_time"]
    echo = timed["EchoStartToFirstByte/manual_time"]
    start_cpu = start["process_cpu_us"]
    rows.append(("icphost start to its first printed value (process CPU time)",
                 f"{start_cpu:.0f} us (wall {ns(start, 'real_time') / 1e3:.0f} us; /bin/echo {echo['process_cpu_us']:.0f} us"
                 f" CPU, {ns(echo, 'real_time') / 1e3:.0f} us wall)",
                 f"< {START_GOAL_US:.0f} us", start_cpu < START_GOAL_US))

    for label, key in (("plug-in", "MillionCallsInThePlugin/iterations:1"),
                       ("icphost", "MillionCallsInIcphost/iterations:1")):
        m = memory[key]
        growth = m["heap_growth"]
        rows.append((f"{int(m['calls']):,} calls in the {label}: heap growth",
                     f"{growth / 1024:+.1f} KiB (heap {m['heap'] / 1024:.0f} KiB, RSS {m['rss_growth'] / 1024:+.0f} KiB)",
                     f"< {HEAP_GROWTH_GOAL // 1024} KiB", growth < HEAP_GROWTH_GOAL))

    date = datetime.date.today().isoformat()
    print(f"machine: {machine()}; {date}; load average {os.getloadavg()[0]:.1f}")
    if counts_note:
        print(counts_note)
    width = max(len(r[0]) for r in rows)
    mwidth = max(len(r[1]) for r in rows)
    for figure, measured, goal, ok in rows:
        print(f"{figure:<{width}}  {measured:<{mwidth}}  {goal:<10}  {verdict(ok)}")
    missed = [r[0] for r in rows if not r[3]]

    if args.readme and not args.quick:
        write_readme(rows, date)
    if args.quick:
        print("quick run: the benchmarks work; the figures decide nothing")
        return 0
    if missed:
        print("goals missed: " + "; ".join(missed))
        return 1
    print("every goal holds")
    return 0


def write_readme(rows, date):
    path = os.path.join(ROOT, "README.md")
    with open(path) as f:
        text = f.read()
    begin, end = "<!-- bench:begin -->", "<!-- bench:end -->"
    if begin not in text or end not in text:
        sys.exit("bench.py: README.md has no bench:begin/bench:end markers")
    lines = [begin, "", f"Measured on {machine()}, {date}, Release build (`python3 scripts/bench.py --readme`).",
             "A pair's figure is the body's time minus its bare SDK calls' (median CPU time of interleaved",
             "repetitions), then the two times, the plug-in's own instructions per call (callgrind) and its",
             "allocations per call beyond the SDK's.",
             "", "| Figure | Measured | Goal | |", "|---|---|---|---|"]
    for figure, measured, goal, ok in rows:
        lines.append(f"| {figure} | {measured} | {goal} | {verdict(ok)} |")
    lines += ["", end]
    head, rest = text.split(begin, 1)
    tail = rest.split(end, 1)[1]
    with open(path, "w") as f:
        f.write(head + "\n".join(lines) + tail)
    print("README.md: table rewritten")


if __name__ == "__main__":
    sys.exit(main())
