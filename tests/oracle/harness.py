"""Runs uploads through trace_tool, makes random ones, and makes a failing one small.

A case is one request for the tool as Python data: "upload", "model", "document" (a Python value; it
becomes the request's "text"), and the present values "rw", "lm", "answers", "files", "refuse", each left
out when empty.

Texts in results are bytes held in str, one character each (latin-1).

Environment: GATEWAY_BUILD_DIR, folder with tests/trace_tool (default: build).
"""

import copy
import json
import os
import subprocess

REPOSITORY = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
TOOL = os.path.join(REPOSITORY, os.environ.get("GATEWAY_BUILD_DIR", "build"), "tests", "trace_tool")
PRESENT = ("rw", "lm", "answers", "files", "refuse")


# ---------------------------------------------------------------------------------------------------
# Running

def json_text(value):
    """JSON of a document. An infinite number becomes one that no double holds."""
    return json.dumps(value, ensure_ascii=False).replace("-Infinity", "-1e999").replace("Infinity", "1e999")


def request_line(case):
    request = {"upload": case.get("upload", "configuration"), "model": case["model"],
               "text": json_text(case["document"])}
    for name in PRESENT:
        if case.get(name):
            request[name] = case[name]
    return json.dumps(request, ensure_ascii=False).encode("utf-8", "surrogateescape")


def run(cases):
    """(result, trace) of each case."""
    stdin = b"".join(request_line(case) + b"\n" for case in cases)
    done = subprocess.run([TOOL], input=stdin, stdout=subprocess.PIPE, check=False)
    # One character a byte: JSON escapes are ASCII, all else passes as it is.
    answers = [json.loads(line) for line in done.stdout.decode("latin-1").split("\n") if line]
    if done.returncode != 0 or len(answers) != len(cases):
        lost = cases[min(len(answers), len(cases) - 1)]
        raise AssertionError("trace_tool ended with %d after %d of %d answers; next case:\n%s"
                             % (done.returncode, len(answers), len(cases), show(lost)))
    return [(answer["result"], answer["trace"]) for answer in answers]


def present_of(case):
    return {name: case[name] for name in PRESENT if case.get(name)}


# ---------------------------------------------------------------------------------------------------
# Random documents. A kind is a function from a random.Random to a value; kinds are combined to the
# shape of a section.

ODD_TEXTS = [
    "", " ", "0", "1", "-1", "true", "on", "%s", "%d%n", "a b", "a\"b", "$(x)", "`x`", "a;b", "a\\b", "a\nb", "a\tb",
    "\r", "'", "ä", "é1", "Ünïcödé", "日本語テキスト", "\U0001f600x", "e\u0301", "x\u0000y", "\u0000", "\x7f",
    "null", "-", "--", "-copy", "123456789012345678901234567890123",
]
ODD_VALUES = [None, [], {}, [1], ["x"], {"a": 1}, [[]], "", "text", "true", "1", 0, 1, -1, 2.5, True, False,
              [{"enable": True, "source": 1, "ipaddr": "10.0.0.9"}], {"a": {"ipaddr": "10.0.0.9"}, "b": 5}]
NUMBERS = [0, 1, 2, 3, 4, 5, 7, 24, 25, 26, 29, 30, 100, -1, -2, 0.5, -0.5, 0.999, -0.999, 1.0, 1.5, -1.5, 2.999,
           2147483646, 2147483647, 2147483648, -2147483647, -2147483648, -2147483649, 2147483646.5,
           4294967295, 4294967296, 1e10, -1e10, 1e300, -1e300, float("inf"), float("-inf"), 1e-300, -0.0]


def long_text(random):
    """Around and over the sizes of buffers; seldom over what a single argument of a command can hold."""
    unit = random.choice(["a", "0", "ä", "x,", "Zz-", " "])
    size = random.choice([100, 199, 255, 1000, 1015, 1023, 1024, 1025, 2000, 2047, 2048, 2100, 4095, 4096, 8191, 9000])
    if random.random() < 0.01:
        size = 140000
    return (unit * size)[:size]


def odd_text(random):
    if random.random() < 0.06:
        return long_text(random)
    return random.choice(ODD_TEXTS)


def near_miss(random, word):
    """Almost that word."""
    ways = [word.upper(), word.capitalize(), word.title(), word + " ", " " + word, word + "x", "x" + word,
            word[:-1], word[1:], word.replace(" ", ""), word.replace("-", "_"), word.swapcase(),
            word + "\u0000x", word + "\n"]
    return random.choice(ways)


def mostly(kind, share=0.85):
    """That kind, and now and then a value of any type."""
    def make(random):
        return kind(random) if random.random() < share else copy.deepcopy(random.choice(ODD_VALUES))
    return make


def flag():
    return mostly(lambda random: random.random() < 0.5, 0.8)


def number(*edges):
    def make(random):
        roll = random.random()
        if edges and roll < 0.6:
            return random.choice(edges)
        if roll < 0.85:
            return random.choice(NUMBERS)
        return random.randint(-50, 5000) if roll < 0.95 else random.uniform(-40, 40)
    return mostly(make)


def text(*samples, sizes=()):
    """Samples, texts of exactly these sizes (and one more, one less), odd texts."""
    alphabet = ["a", "B", "7", "-", " ", "_", ".", "ä", "漢"]

    def sized(random):
        size = random.choice(sizes) + random.choice([-1, 0, 0, 1])
        if random.random() < 0.6:
            return "".join(random.choice(alphabet[:7]) for _ in range(size))
        made = "".join(random.choice(alphabet) for _ in range(size))
        return made.encode()[:size].decode("utf-8", "ignore")

    def make(random):
        roll = random.random()
        if samples and roll < 0.5:
            return random.choice(samples)
        if sizes and roll < 0.75:
            return sized(random)
        return odd_text(random)
    return mostly(make)


def word(*words, numbers=()):
    """A vocabulary; where numbers are given, a number as well."""
    def make(random):
        roll = random.random()
        if roll < 0.6:
            return random.choice(words)
        if numbers and roll < 0.8:
            return random.choice(numbers) if random.random() < 0.6 else random.choice(NUMBERS)
        if roll < 0.94:
            return near_miss(random, random.choice(words))
        return odd_text(random)
    return mostly(make, 0.9)


def array(kind, sizes):
    def make(random):
        return [kind(random) for _ in range(random.choice(sizes))]
    return mostly(make, 0.93)


def section(members, share=0.93):
    """An object of these members: some missing, some misspelt, now and then a foreign one."""
    def make(random):
        presence = random.choice([0.15, 0.5, 0.8, 0.95, 1.0])
        made = []
        for key, kind in members.items():
            if random.random() >= presence:
                continue
            if random.random() < 0.06:
                other = random.choice([key.upper(), key.capitalize(), key.swapcase(), key + "x", key[:-1]])
                made.append((other, kind(random)))
                if random.random() < 0.5:
                    continue
            made.append((key, kind(random)))
            if random.random() < 0.02:
                made.append((key.upper(), kind(random)))
        if random.random() < 0.1:
            made.append(("comment", copy.deepcopy(random.choice(ODD_VALUES))))
        if random.random() < 0.3:
            random.shuffle(made)
        return dict(made)
    return mostly(make, share)


# ---------------------------------------------------------------------------------------------------
# Comparing

def differs(case, expected):
    """What differs for one case: None, or what was expected and what was seen."""
    seen = run([case])[0]
    wanted = expected(case)
    return None if seen == wanted else (wanted, seen)


def smaller(value):
    """Values one step simpler than this one."""
    if isinstance(value, dict):
        for key in value:
            yield {k: v for k, v in value.items() if k != key}
        for key in value:
            for simpler in smaller(value[key]):
                yield {k: simpler if k == key else v for k, v in value.items()}
    elif isinstance(value, list):
        for i in range(len(value)):
            yield value[:i] + value[i + 1:]
        for i, element in enumerate(value):
            for simpler in smaller(element):
                yield value[:i] + [simpler] + value[i + 1:]
    elif isinstance(value, str) and len(value) > 1:
        yield value[:len(value) // 2]
        yield value[len(value) // 2:]
        yield value[:-1]
        yield value[1:]


def shrink(case, expected):
    """A case that differs as well and cannot be made smaller by one step."""
    shrunk = True
    while shrunk:
        shrunk = False
        for part in ("document",) + PRESENT:
            if not case.get(part):
                continue
            for simpler in smaller(case[part]):
                if part in ("rw", "lm") and any(len(pair) != 2 for pair in simpler):
                    continue
                candidate = dict(case)
                candidate[part] = simpler
                if differs(candidate, expected):
                    case, shrunk = candidate, True
                    break
    return case


def show(case):
    lines = ["model    " + case["model"], "document " + json.dumps(case["document"], ensure_ascii=True)]
    return "\n".join(lines + ["%-8s %s" % (name, json.dumps(case[name])) for name in PRESENT if case.get(name)])


def show_trace(outcome):
    """A result and its trace, the progress lines folded away where nothing stands between them."""
    result, trace = outcome
    lines = ["result %d" % result]
    for entry in trace.split("\n")[:-1]:
        if entry.startswith('shell echo "upgradeUnitSetting:'):
            step = entry.split(":")[1].split(",")[0]
            if lines[-1].startswith("progress "):
                lines[-1] = lines[-1].split("-")[0] + "-" + step
            else:
                lines.append("progress " + step)
        else:
            lines.append(entry)
    return "\n".join("    " + line for line in lines)


def report(case, expected):
    """The smallest such case with both traces, as text."""
    case = shrink(case, expected)
    wanted, seen = differs(case, expected)
    return "%s\nexpected\n%s\nseen\n%s" % (show(case), show_trace(wanted), show_trace(seen))


def differing(cases, expected):
    """Of these cases, those that differ."""
    return [case for case, seen in zip(cases, run(cases)) if seen != expected(case)]
