"""The example of a production test, with a healthy device and with broken ones."""

import pathlib
import subprocess
import sys
import xml.etree.ElementTree as xml

import pytest

EXAMPLE = pathlib.Path(__file__).resolve().parents[2] / "station/examples/production_test.py"


@pytest.fixture
def report_of(pytestconfig, tmp_path):
    def run(*words):
        report = tmp_path / "report.xml"
        options = [f"{name}={pytestconfig.getoption(name)}" for name in ("--r47-sim", "--r47-console")]
        result = subprocess.run([sys.executable, "-m", "pytest", "-q", "-p", "no:cacheprovider", EXAMPLE, *options,
                                 "--r47-clock", "scaled 20", "--r47-timeout", "60",
                                 "--serial-number", "4711", "--junitxml", report, *words],
                                stdout=subprocess.PIPE, text=True)
        return result, xml.parse(report).getroot().find("testsuite")

    return run


def properties(element):
    return {one.get("name"): one.get("value") for one in element.findall("properties/property")}


def components_that_failed(suite):
    return [properties(case)["component"] for case in suite.findall("testcase") if case.find("failure") is not None]


def test_healthy_device_passes_ten_steps(report_of):
    result, suite = report_of()
    assert result.returncode == 0, result.stdout
    assert properties(suite)["serial_number"] == "4711"
    cases = suite.findall("testcase")
    assert len({case.get("name")[:len("test_00")] for case in cases}) == 10
    frequency = next(properties(case) for case in cases if "test_08" in case.get("name"))
    assert frequency == {"component": "autofocus", "frequency": "183 Hz (150 to 200 Hz)"}


@pytest.mark.parametrize("rule, component", [
    ("autofocus_t::get_calibration_frequency value 90", "autofocus"),
    ("camera_t::set_roi_xyoffset status -1", "camera"),
    ("rtu_t::get_all_pin_values value 000000", "digital I/O"),
])
def test_report_names_the_component_that_is_broken(report_of, rule, component):
    result, suite = report_of("--r47-fault", rule)
    assert result.returncode == 1, result.stdout
    assert set(components_that_failed(suite)) == {component}
