"""Measures what a request costs and tells it beside its floor. Started by scripts/bench."""

import argparse
import contextlib
import itertools
import json
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile

import effects
import report
import sandbox

KIB, MIB = 1024, 1024 * 1024
SIZES = {"1 KB": 1024, "100 KB": 102400, "512,000 bytes": 512000, "10 MB": 10 * MIB - 1}

# Field as the gateway looks for it, the longest content, and how often the gateway parses it.
KINDS = {
    "RS-232 list": (' name="Rs232CodeUpload"', 512000, 1),
    "IR list": (' name="IRCodeUpload"', 512000, 1),
    "unit configuration": (' name="UnitConfUpload"', MIB - 1, 1),
    "trigger lists": (' name="TriggerCommandsUpload"', MIB - 1, 1),
    "certificate export": ("name=getCaEncryptData", 0, 0),
    "video wall": (' name="VideoWallUpload"', 512000, 1),
    "custom EDID": (' name="CustomEdidFile"', 512000, 1),
    "no known kind": (' name="SomethingElse"', 512000, 0),
}

WALL_LIMIT, INSTRUCTION_LIMIT = 1.15, 1.20
STORE_LIMIT, CONFIGURATION_LIMIT, START_LIMIT = 1.30, 1.10, 1.10
SIZE_LIMIT = 100 * KIB


def built(*path):
    return os.path.join(effects.REPOSITORY, "build", *path)


GATEWAY = built("upload_gateway")
FLOOR = built("bench", "bench_floor")


def gateway_of(model):
    return built("models", model, "upload_gateway")


# --- Requests ---------------------------------------------------------------------------------------

BOUNDARY = "----WebKitFormBoundary7MA4YWxkTrZu0gW"


def multipart(field, content, content_type="application/json"):
    """A body as a browser writes it."""
    field = field.strip()
    head = (f"--{BOUNDARY}\r\nContent-Disposition: form-data; {field}; filename=\"upload.json\"\r\n"
            f"Content-Type: {content_type}\r\n\r\n")
    return head.encode() + content + f"\r\n--{BOUNDARY}--\r\n".encode()


def refused_document(size):
    """JSON of exactly this size that every handler parses and then refuses, so that nothing is done
    to the unit: commands with names, codes and numbers, as lists hold them."""
    begin, end = b'{"model":"none","commands":[', b"0]}"
    text = bytearray(begin)
    for number in itertools.count(1):
        entry = f'{{"name":"Projector {number}","code":"0A 4B {number:04X} 0D","repeat":{number % 9}}},'
        if len(text) + len(entry) + len(end) > size:
            break
        text += entry.encode()
    return bytes(text) + b" " * (size - len(text) - len(end)) + end


def refused_body(field, size):
    return multipart(field, refused_document(size - len(multipart(field, b""))))


def write_file(content):
    with tempfile.NamedTemporaryFile(dir="/tmp", delete=False) as file:
        file.write(content)
    return file.name


# --- Measuring --------------------------------------------------------------------------------------

class Measuring:
    """What was measured so far: rows of the table, series of the growth plot, counts."""

    def __init__(self, quick):
        self.quick = quick
        self.rows = []
        self.series = []
        self.unit = []

    def runs(self, count):
        return max(5, count // 8) if self.quick else count

    def pairs(self, count, path, commands, via="file", environment=None):
        """Alternating runs of the commands; a list of (times in ns, peaks in KB) for each."""
        joined = list(itertools.chain.from_iterable([*command, "--"] for command in commands))[:-1]
        result = subprocess.run(
            [built("bench", "bench_pairs"), str(self.runs(count)), path, via, *joined], check=True,
            env={"PATH": sandbox.TOOL_PATH, "REQUEST_METHOD": "POST", **(environment or {})},
            stdout=subprocess.PIPE, text=True)
        columns = list(zip(*([int(word) for word in line.split()]
                             for line in result.stdout.splitlines()), strict=True))
        return [(columns[2 * i], columns[2 * i + 1]) for i in range(len(commands))]

    def row(self, figure, value, floor, unit, limit, note=""):
        """A row whose ratio to the floor is limited."""
        self.add({"figure": figure, "value": value, "floor": floor, "unit": unit,
                  "ratio": value / floor, "limit": limit, "within": value / floor <= limit,
                  "note": note})

    def bound(self, figure, value, floor, unit, bound, note=""):
        """A row whose value itself is limited."""
        self.add({"figure": figure, "value": value, "floor": floor, "unit": unit, "ratio": None,
                  "limit": bound, "within": value <= bound, "note": note})

    def add(self, row):
        self.rows.append(row)
        print(report.plain_row(row), flush=True)

    def timed(self, figure, count, path, gateway, floor, limit, via="file", environment=None):
        times = [times for times, _ in
                 self.pairs(count, path, (gateway, floor), via, environment)]
        median, floor_median = (statistics.median(one) / 1e6 for one in times)
        self.row(figure, median, floor_median, "ms", limit)


def instructions(command, path, with_loader=False):
    """In user space, from main on or with what the dynamic loader does before it, in thousands."""
    begin = [] if with_loader else ["--toggle-collect=main"]
    with open(path, "rb") as body:
        result = subprocess.run(
            ["/usr/bin/valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", *begin,
             *command],
            stdin=body, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=True,
            env={"PATH": sandbox.TOOL_PATH, "REQUEST_METHOD": "POST",
                 "CONTENT_LENGTH": str(os.path.getsize(path))})
    return int(re.search(r"Collected : (\d+)", result.stderr).group(1)) / 1e3


def measure_intake(measuring):
    clean_unit(effects.MODELS[0])
    for kind, (field, limit, parses) in KINDS.items():
        for size_name, size in SIZES.items():
            path = write_file(refused_body(field, size))
            floor = [FLOOR, field, str(limit), str(parses)]
            for via in ("file", "pipe"):
                measuring.timed(f"{kind}, {size_name}, from a {via}", 60 if size > MIB else 150, path,
                                [GATEWAY], floor, WALL_LIMIT, via)
            if not measuring.quick:
                measuring.row(f"{kind}, {size_name}, instructions",
                              instructions([built("bench", "bench_gateway")], path),
                              instructions(floor, path), "thousand", INSTRUCTION_LIMIT)
            os.unlink(path)
    if not measuring.quick:
        field, limit, parses = KINDS["unit configuration"]
        path = write_file(refused_body(field, KIB))
        floor = [FLOOR, field, str(limit), str(parses)]
        measuring.row("unit configuration, 1 KB, instructions with the loader's",
                      instructions([GATEWAY], path, True), instructions(floor, path, True),
                      "thousand", INSTRUCTION_LIMIT)


def rs232_list(size):
    document = refused_document(size - 25)
    text = b'{"data":{"setting":' + document
    return text + b" " * (size - len(text) - 2) + b"}}"


def measure_store(measuring):
    field, limit, parses = KINDS["RS-232 list"]
    path = write_file(multipart(field, rs232_list(limit)))
    stored = "/user_data2/rs232_list.json"
    twin = "/var/tmp/rs232_list.json"
    run_gateway(GATEWAY, path)
    with open(stored, "rb") as gateway_file:
        kept = gateway_file.read()
    subprocess.run([FLOOR, field, str(limit), str(parses), stored, twin], check=True,
                   stdin=open(path, "rb"), stdout=subprocess.DEVNULL,
                   env={"PATH": sandbox.TOOL_PATH, "CONTENT_LENGTH": str(os.path.getsize(path))})
    with open(stored, "rb") as floor_file:
        if kept != floor_file.read() or len(kept) < limit // 2:
            raise RuntimeError("the gateway and the floor stored different lists")
    measuring.timed("RS-232 list of 512,000 bytes stored", 60, path, [GATEWAY],
                    [FLOOR, field, str(limit), str(parses), stored, twin], STORE_LIMIT)


# --- Unit configurations ----------------------------------------------------------------------------

def clean_unit(model):
    """Takes away what was stored, and puts the factory's present values back."""
    for folder in ("/user_data2", "/share", "/var/tmp"):
        for name in os.listdir(folder):
            os.unlink(os.path.join(folder, name))
    sandbox.write_dumps(*effects.present_values(model))


def fast_clock():
    # So fast that all pauses of a configuration take less than a millisecond together.
    return {"LD_PRELOAD": sandbox.faketime_library(), "FAKETIME": "+0 x1000000"}


def run_gateway(gateway, path, strace=()):
    """Runs one request, which must succeed, if asked for under strace."""
    clock = fast_clock()
    command = [gateway]
    if strace:
        command = ["/usr/bin/strace", *strace, gateway]
        for name, value in clock.items():
            command[1:1] = ["-E", f"{name}={value}"]
        clock = {}
    with open(path, "rb") as body:
        result = subprocess.run(
            command, stdin=body, stdout=subprocess.PIPE, check=True,
            env={"PATH": sandbox.TOOL_PATH, "REQUEST_METHOD": "POST",
                 "CONTENT_LENGTH": str(os.path.getsize(path)), **clock})
    if b'"success":true' not in result.stdout:
        raise RuntimeError(f"refused: {result.stdout!r}")


def executed(gateway, path):
    """The arguments of every program that a run starts, the gateway first."""
    log = "/tmp/calls"
    run_gateway(gateway, path, ["-f", "-qq", "-e", "trace=execve", "-e", "signal=none",
                                "-s", "400000", "-o", log])
    with open(log, encoding="latin-1") as file:
        return effects.programs_in(file.read())


def shell_lines(programs):
    """The lines that the gateway ran itself: what it starts are shells, and nothing else is."""
    return [program[-1] for program in programs if program[:2] == [b"sh", b"-c"]]


MCU_LINE = re.compile(rb'echo ".*" > /dev/ttyS1 &', re.DOTALL)


def replay_file(lines):
    return write_file(b"".join((b"m" if MCU_LINE.fullmatch(line) else b"s") + line + b"\0"
                               for line in lines))


def configuration_body(document):
    return multipart(KINDS["unit configuration"][0], json.dumps(document).encode())


def measure_configuration(measuring, model):
    clean_unit(model)
    path = write_file(configuration_body(effects.example(model)))
    run_gateway(gateway_of(model), path)
    lines = shell_lines(executed(gateway_of(model), path))
    exchanges = sum(1 for line in lines if MCU_LINE.fullmatch(line))
    measuring.timed(
        f"{model} configured: {len(lines) - exchanges} lines, {exchanges} exchanges", 24, path,
        [gateway_of(model)], [built("bench", "bench_replay"), replay_file(lines)],
        CONFIGURATION_LIMIT, environment=fast_clock())


def count_effects(model, document):
    """Shell lines, commands and pauses by the recorder; programs started, as the unit sees them."""
    body = write_file(configuration_body(document))
    clean_unit(model)
    programs = executed(gateway_of(model), body)
    os.unlink(body)
    counts, = effects.traced(built(), model, [document])
    seen = shell_lines(programs)
    exchanges = sum(1 for line in seen if MCU_LINE.fullmatch(line))
    # The MAC is asked for as well, which the recorder does not see.
    if [len(seen) - exchanges - 1, exchanges] != counts[:2]:
        raise RuntimeError(f"{model} runs {len(seen)} lines, the recorder tells of {counts}: "
                           f"{document}")
    return [*counts, len(programs) - 1]


def count_sections(measuring):
    """What each section of the examples starts beyond what a document without sections does."""
    for model in effects.MODELS:
        base = None
        for name, document in effects.sections(model):
            counts = count_effects(model, document)
            measuring.unit.append([model, name, *(effects.less(counts, base) if base else counts)])
            base = base or counts


# --- Memory, start-up, size -------------------------------------------------------------------------

def measure_memory(measuring):
    field, limit, parses = KINDS["unit configuration"]
    for name, size in (("1 KB", 1024), ("10 MB", SIZES["10 MB"])):
        path = write_file(refused_body(field, size))
        peaks = [statistics.median(peaks) for _, peaks in measuring.pairs(
            20, path, ([GATEWAY], [FLOOR, field, str(limit), str(parses)],
                       [built("bench", "bench_empty")]))]
        if size < MIB:
            measuring.bound(f"peak memory, {name}", peaks[0], peaks[1], "KB", peaks[1] + 512,
                            "the floor's and 512 KB")
        else:
            measuring.bound(f"peak memory, {name}", peaks[0], peaks[1], "KB",
                            (size + MIB) / KIB + 2048, "the body, the content (1 MB) and 2 MB")


def measure_start(measuring):
    measuring.timed("start-up", 400, "/dev/null", [GATEWAY], [built("bench", "bench_empty")],
                    START_LIMIT, environment={"REQUEST_METHOD": "none"})


def measure_size(measuring):
    for model in effects.MODELS:
        program = os.path.join(effects.REPOSITORY, "build-armhf", "models", model,
                               "upload_gateway")
        if os.path.exists(program):
            copy = "/tmp/stripped"
            subprocess.run(["/usr/bin/arm-linux-gnueabihf-strip", "-o", copy, program], check=True)
            measuring.bound(f"{model} program for 32-bit ARM, stripped",
                            os.path.getsize(copy) / KIB, None, "KB", SIZE_LIMIT / KIB)


# --- Growth -----------------------------------------------------------------------------------------

def growth(measuring, name, x_unit, points):
    """Each point is (x, run), and run makes one measurement in milliseconds. The points are measured
    in turn, and the fastest run counts: what disturbs a run only adds to it."""
    samples = {x: [] for x, _ in points}
    for _ in range(measuring.runs(24)):
        for x, run in points:
            samples[x].append(run())
    series = {"name": name, "x": x_unit,
              "points": [[x, min(values)] for x, values in samples.items()]}
    series["straightness"] = report.straightness(series["points"])
    measuring.series.append(series)
    print(f"{name}: straight line explains {100 * series['straightness']:.1f} %", flush=True)


def request(measuring, gateway, path, before=None):
    """A run of one request, for growth()."""
    def run():
        if before is not None:
            before()
        (times, _), = Once(measuring).pairs(1, path, ([gateway],), environment=fast_clock())
        return times[0] / 1e6
    return run


class Once(Measuring):
    """One run at a time."""

    def __init__(self, measuring):
        super().__init__(measuring.quick)

    def runs(self, count):
        return count


def measure_growth(measuring):
    # On one processor, since waiting for another to wake up is no work of the gateway's.
    os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})
    model = "ZAVO-ENC-U300-DA"
    gateway = gateway_of(model)
    values = effects.present_values(model)
    field = KINDS["unit configuration"][0]
    clean_unit(model)

    growth(measuring, "Body size", "KB",
           [(size, request(measuring, gateway, write_file(refused_body(field, size * KIB))))
            for size in range(100, 1001, 100)])

    # Sections differ in what they do: a point is every rotation's first few, on average.
    sections = [document for name, document in effects.sections(model)
                if not name.startswith("stream.")][1:]

    def first_sections(count):
        paths = itertools.cycle([
            write_file(configuration_body(dict(itertools.chain(
                *(section.items() for section in (sections + sections)[first:first + count])))))
            for first in range(0, len(sections), 3)])

        def run():
            times = [request(measuring, gateway, next(paths))()
                     for _ in range(0, len(sections), 3)]
            return sum(times) / len(times)
        return run

    rounds = measuring.quick
    measuring.quick = True
    growth(measuring, "Section count", "sections",
           [(count, first_sections(count)) for count in range(3, len(sections) + 1, 6)])
    measuring.quick = rounds

    # From here on the shell does nothing either: what grows is the gateway's own work.
    os.unlink("/bin/sh")
    os.symlink("/unit/bench_unit", "/bin/sh")
    named = write_file(configuration_body({"model": model, "device_name": "Hall 1"}))

    def snapshot_of(size):
        filler = [f"filler_parameter_{number}=value {number}" for number in range(size * KIB // 37)]

        def write():
            sandbox.write_dumps(filler + values[0], values[1])
            shutil.copy("/dev/shm/rwparam", "/dev/shm/rwparam_temp")
        return write
    growth(measuring, "Snapshot size", "KB",
           [(size, request(measuring, gateway, named, snapshot_of(size)))
            for size in (1, 100, 200, 300, 400, 500)])
    sandbox.write_dumps(*values)

    def network(count):
        vlans = [2 + number % 4000 for number in range(count // 4)]
        port = {"tagged_vlans": vlans, "untagged_vlans": vlans}
        return {"model": model, "network": {"lan1": port, "lan2": port}}
    growth(measuring, "VLAN list length", "VLANs",
           [(count, request(measuring, gateway, write_file(configuration_body(network(count)))))
            for count in range(0, 80001, 10000)])

    def green_list(count):
        units = [{"ipaddr": f"10.{20 + number // 62500}.{number // 250 % 250}.{number % 250}"}
                 for number in range(count)]
        return {"model": model, "usb_devices": {"green_list": {"enable": True, "lists": units}}}
    growth(measuring, "Green list length", "units",
           [(count, request(measuring, gateway, write_file(configuration_body(green_list(count)))))
            for count in range(0, 35001, 5000)])
    os.unlink("/bin/sh")
    os.symlink("/bin/busybox", "/bin/sh")


# --- The whole --------------------------------------------------------------------------------------

PARTS = {
    "start": measure_start,
    "memory": measure_memory,
    "size": measure_size,
    "intake": measure_intake,
    "store": measure_store,
    "configuration": lambda measuring: [measure_configuration(measuring, model)
                                        for model in effects.MODELS],
    "sections": count_sections,
    "growth": measure_growth,
}


def measure(arguments):
    unit = sandbox.start_unit(built("bench", "bench_unit"))
    measuring = Measuring(arguments.quick)
    try:
        for part, measure_part in PARTS.items():
            if not arguments.parts or part in arguments.parts:
                measure_part(measuring)
    finally:
        unit.kill()
    with open("/results/bench-results.json", "w", encoding="utf-8") as file:
        json.dump({"rows": measuring.rows, "growth": measuring.series,
                   "sections": measuring.unit}, file, indent=1)
    return 0


def read_results(path):
    if not os.path.exists(path):
        return {"rows": [], "growth": [], "sections": []}
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def renewed(before, found):
    """The earlier rows or series, with what was measured again in the place of its namesake."""
    def name(entry):
        return tuple(entry[:2]) if isinstance(entry, list) else entry.get("figure", entry.get("name"))
    again = {name(entry): entry for entry in found}
    return ([again.pop(name(entry), entry) for entry in before] + list(again.values()))


def main():
    parser = argparse.ArgumentParser(prog="scripts/bench", description=__doc__)
    parser.add_argument("--quick", action="store_true",
                        help="repeat less often and leave docs as it is")
    parser.add_argument("parts", nargs="*", metavar="PART",
                        help="measure only these again: " + ", ".join(PARTS))
    arguments = parser.parse_args()
    if set(arguments.parts) - set(PARTS):
        parser.error("there are these parts: " + ", ".join(PARTS))
    if sandbox.is_inside():
        return measure(arguments)
    with contextlib.suppress(PermissionError):
        os.nice(-10)  # other work on the machine then disturbs less
    folder = os.path.join(effects.REPOSITORY, "build")
    path = os.path.join(folder, "bench-results.json")
    before = read_results(path)
    status = sandbox.enter(os.path.abspath(__file__), sys.argv[1:], folder)
    if status == 0:
        found = read_results(path)
        print(report.plain_table(found["rows"]))
        if arguments.parts:
            found = {kind: renewed(before[kind], found[kind]) for kind in found}
            with open(path, "w", encoding="utf-8") as file:
                json.dump(found, file, indent=1)
        if not arguments.quick and all(found.values()):
            report.write_documents(found, os.path.join(effects.REPOSITORY, "docs"))
    return status


if __name__ == "__main__":
    sys.exit(main())
