"""What Debian's package tells Python of the station, against what pyproject.toml tells."""

import configparser
import email
import pathlib
import re
import tomllib

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROJECT = tomllib.loads((ROOT / "station/pyproject.toml").read_text())["project"]


def test_metadata_is_that_of_the_project():
    metadata = email.message_from_string((ROOT / "packaging/station/METADATA.in").read_text())
    assert metadata["Name"] == PROJECT["name"]
    assert metadata["Summary"] == PROJECT["description"]
    assert metadata["Requires-Python"] == PROJECT["requires-python"]
    extras = PROJECT["optional-dependencies"]
    assert metadata.get_all("Provides-Extra") == list(extras)
    assert sorted(metadata.get_all("Requires-Dist")) == sorted(
        f'{package}; extra == "{extra}"' for extra, packages in extras.items() for package in packages)


def test_entry_points_are_those_of_the_project():
    entry_points = configparser.ConfigParser()
    entry_points.read(ROOT / "packaging/station/entry_points.txt")
    assert {group: dict(entry_points[group]) for group in entry_points.sections()} == PROJECT["entry-points"]


def test_version_is_that_of_the_console():
    assert re.search(r"^project\(.* VERSION (\S+) ", (ROOT / "CMakeLists.txt").read_text(), re.M)[1] == PROJECT["version"]
