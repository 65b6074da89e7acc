"""The command channel to the front panel's microcontroller, seen through the HDCP section."""

import time

from conftest import assert_told

TWO_COMMANDS = {"hdcp": {"hdmi_compatibility": True, "usbc_compatibility": False}}
BOTH_SENT = """
    progress 1-2
    line echo "hdcpadvertising,2:on" > /dev/ttyS1 &
    mcu hdcpadvertising,2:on
    line echo "hdcpadvertising,1:off" > /dev/ttyS1 &
    mcu hdcpadvertising,1:off
    progress 3-25
"""


def seconds_for(unit, document, expected):
    begun = time.monotonic()
    assert_told(unit, document, expected)
    return time.monotonic() - begun


def test_CommandsGoOutOneByOne(u300):
    assert seconds_for(u300, TWO_COMMANDS, BOTH_SENT) < 9


def test_TheNextCommandWaitsForTheAnswer(u300):
    u300.set_mcu("slow", 400)
    assert 0.8 <= seconds_for(u300, TWO_COMMANDS, BOTH_SENT) < 9


def test_AnAnswerInPiecesIsJoined(u300):
    u300.set_mcu("split", 10)
    assert seconds_for(u300, TWO_COMMANDS, BOTH_SENT) < 9


def test_AnAnswerThatBreaksOffEndsTheWait(u300):
    u300.set_mcu("hangup")
    assert seconds_for(u300, TWO_COMMANDS, BOTH_SENT) < 9


def test_WithoutTheRelayNoCommandIsSent(u300):
    u300.set_mcu("absent")
    assert seconds_for(u300, TWO_COMMANDS, "progress 1-25") < 9


def test_ASilentMicrocontrollerCostsTenSeconds(u300):
    u300.set_mcu("silent")
    assert 9.9 <= seconds_for(u300, {"hdcp": {"hdmi_compatibility": False}}, """
        progress 1-2
        line echo "hdcpadvertising,2:off" > /dev/ttyS1 &
        mcu hdcpadvertising,2:off
        progress 3-25
    """) < 30


def test_AnEmptySectionSendsNothing(u300):
    assert_told(u300, {"hdcp": {}}, "progress 1-25")


def test_AMemberOfTheWrongTypeSendsAnEmptyCommand(u300):
    assert_told(u300, {"hdcp": {"hdmi_compatibility": 1}}, """
        progress 1-2
        line echo "" > /dev/ttyS1 &
        mcu
        progress 3-25
    """)
