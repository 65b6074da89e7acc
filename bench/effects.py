"""What a unit configuration tells a unit and what the gateway starts for it. Shared by the bench and
by the tests that count."""

import json
import os
import re
import subprocess

REPOSITORY = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
MODELS = ("ZAVO-ENC-U300-DA", "ZAVO-ENC-E100-DA", "ZAVO-DEC-D200-DA")


def example(model):
    path = os.path.join(REPOSITORY, "examples", f"unit-configuration.{model}.json")
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def sections(model):
    """(name, document with this section alone) for each section of the model's example, those of
    "stream" each on its own. What every configuration does is the first, with no section."""
    bare = {"model": model, "stream": {}}
    yield "(every configuration)", bare
    for key, value in example(model).items():
        if key == "stream":
            for part, section in value.items():
                yield f"stream.{part}", {**bare, key: {part: section}}
        elif key != "model":
            yield key, {**bare, key: value}


def present_values(model):
    """The entries "key=value" of a factory-fresh unit's run-time store and live store."""
    stores = {}
    entries = None
    path = os.path.join(REPOSITORY, "sim", f"unit.{model}.params")
    with open(path, encoding="utf-8") as file:
        for line in file.read().split("\n"):
            if line.startswith("["):
                entries = stores.setdefault(line.strip("[]"), [])
            elif "=" in line and not line.startswith("#"):
                entries.append(line)
    return stores["astparam"], stores["lmparam"]


def traced(build, model, documents):
    """[shell lines, microcontroller commands, seconds of pauses] of each document, by the recorder. A
    value that is read is read by a shell line."""
    run_time, live = ([entry.split("=", 1) for entry in store] for store in present_values(model))
    requests = "".join(json.dumps({"upload": "configuration", "model": model, "rw": run_time,
                                   "lm": live, "text": json.dumps(document)}) + "\n"
                       for document in documents)
    printed = subprocess.run([os.path.join(build, "tests", "trace_tool")], input=requests.encode(),
                             stdout=subprocess.PIPE, check=True).stdout
    counts = []
    for answer in map(json.loads, printed.decode().splitlines()):
        if answer["result"] != 1:
            raise ValueError(f"a document was refused: {answer}")
        trace = answer["trace"].split("\n")
        kinds = [line.split(" ")[0] for line in trace]
        pauses = [int(line.split(" ")[1]) for line in trace if re.fullmatch(r"pause \d+", line)]
        counts.append([kinds.count("shell") + kinds.count("read"), kinds.count("mcu"), sum(pauses)])
    return counts


def less(counts, base):
    return [count - least for count, least in zip(counts, base, strict=True)]


EXECUTED = re.compile(r'execve\("[^"]*", \[(.*)\], 0x[0-9a-f]+.*\)\s+= 0$')
STRING = re.compile(r'"((?:[^"\\]|\\.)*)"')


def programs_in(log):
    """The arguments (bytes) of every program that was started, from the output of strace -f. A call
    during which another process is heard of is told in two halves."""
    programs = []
    begun = {}
    for line in log.splitlines():
        process, call = line.split(None, 1)
        if call.endswith("<unfinished ...>"):
            begun[process] = call.removesuffix("<unfinished ...>").rstrip()
            continue
        resumed = re.match(r"<\.\.\. execve resumed>(.*)", call)
        if resumed:
            call = begun.pop(process) + resumed.group(1)
        executed = EXECUTED.match(call)
        if executed:
            programs.append([word.encode("latin-1").decode("unicode_escape").encode("latin-1")
                             for word in STRING.findall(executed.group(1))])
    return programs
