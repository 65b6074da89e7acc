"""The command channel to the front panel's microcontroller, seen through the panel lock and power."""

import glob
import os
import time

import pytest

from conftest import REPOSITORY, assert_told, told

SOURCES = glob.glob(os.path.join(REPOSITORY, "unitconf", "**", "*.cpp"), recursive=True)
pytestmark = pytest.mark.skipif(
    not any("fplock" in open(path, encoding="utf-8").read() for path in SOURCES),
    reason="no section sends commands to the front panel yet")

TWO_COMMANDS = {"front_panel_lock": True, "power": {"power_status": "poweron"}}
BOTH_SENT = """
    progress 1-20
    line echo "fplock,on" > /dev/ttyS1 &
    mcu fplock,on
    progress 21-24
    line echo "poweron" > /dev/ttyS1 &
    mcu poweron
    progress 25
"""


def seconds_for(unit, document, expected):
    begun = time.monotonic()
    assert_told(unit, document, expected)
    return time.monotonic() - begun


def test_CommandsGoOutOneByOne(u300):
    assert seconds_for(u300, TWO_COMMANDS, BOTH_SENT) < 5


def test_TheNextCommandWaitsForTheAnswer(u300):
    u300.set_mcu("slow", 400)
    assert 0.8 <= seconds_for(u300, TWO_COMMANDS, BOTH_SENT) < 6


def test_AnAnswerInPiecesIsJoined(u300):
    u300.set_mcu("split", 10)
    assert seconds_for(u300, TWO_COMMANDS, BOTH_SENT) < 5


def test_AnAnswerThatBreaksOffEndsTheWait(u300):
    u300.set_mcu("hangup")
    assert seconds_for(u300, TWO_COMMANDS, BOTH_SENT) < 5


def test_WithoutTheRelayNoCommandIsSent(u300):
    u300.set_mcu("absent")
    assert seconds_for(u300, TWO_COMMANDS, "progress 1-25") < 5


def test_ASilentMicrocontrollerCostsTenSeconds(u300):
    u300.set_mcu("silent")
    assert 9.9 <= seconds_for(u300, {"front_panel_lock": False}, """
        progress 1-20
        line echo "fplock,off" > /dev/ttyS1 &
        mcu fplock,off
        progress 21-25
    """) < 15


def test_ALockThatIsNoBooleanSendsNothing(u300):
    assert_told(u300, {"front_panel_lock": {"enable": True}}, "progress 1-25")
    assert told(u300)[-1] == "rebooted"
