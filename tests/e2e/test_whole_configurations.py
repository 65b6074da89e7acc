"""Whole unit configurations: every example against the whole journal that it must give, and the
documents that are large, repeated or follow another upload."""

import os
import re

from conftest import REPOSITORY, post, success, told

EXPECTED = os.path.join(os.path.dirname(os.path.abspath(__file__)), "expected")
SERIAL_LINE = re.compile(r'line echo "(.*)" > /dev/ttyS1 &')


def example(model):
    with open(f"{REPOSITORY}/examples/unit-configuration.{model}.json", "rb") as file:
        return file.read()


def folded(entries):
    """Entries in the notation of the expected journals: a serial line with the command that came of
    it reads "command hdmiout,on", progress is one entry a step."""
    result = []
    at = 0
    while at < len(entries):
        entry = entries[at]
        steps = re.fullmatch(r"progress (\d+)-(\d+)", entry)
        sent = SERIAL_LINE.fullmatch(entry)
        command = f"mcu {sent[1]}".rstrip() if sent else None
        if steps:
            result += [f"progress {step}" for step in range(int(steps[1]), int(steps[2]) + 1)]
        elif command and entries[at + 1:at + 2] == [command]:
            result.append(f"command {sent[1]}".rstrip())
            at += 1
        else:
            result.append(entry)
        at += 1
    return result


def expected_journal(model):
    with open(f"{EXPECTED}/{model}.journal", encoding="utf-8") as file:
        lines = file.read().split("\n")
    return [line for line in lines if line and not line.startswith("#")]


def test_AnExampleConfigurationTellsTheUnitAllOfItInOrder(any_unit):
    reply = post(any_unit, example(any_unit.model))
    assert reply.body == success(any_unit)
    any_unit.wait_for("rebooted")
    assert folded(told(any_unit)) == expected_journal(any_unit.model)
