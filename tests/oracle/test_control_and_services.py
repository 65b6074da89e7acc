"""The program and the plain statement tell a unit the same, for random uploads and any present values."""

import pathlib
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).parent))

import control_and_services as statement
import services_harness as harness

SEED = 20240607
CASES = [*((model, 1500) for model in statement.MODELS), ("custom_edid", 300), ("video_wall", 1000)]


@pytest.mark.parametrize("kind, count", CASES)
def test_random_uploads_leave_the_trace_that_the_plain_statement_expects(kind, count):
    differing = harness.differences(harness.generate(kind, count, SEED))
    if differing:
        smallest = harness.shrink(min(differing, key=lambda request: len(str(request))))
        pytest.fail(
            "%d of %d uploads differ; one of them, made small:\n%s"
            % (len(differing), count, harness.describe(smallest)),
            pytrace=False,
        )
