"""Tests all devices of a fleet at once, a thread for each, and prints what came of each:

    PYTHONPATH=station r47-sim fleet 50 --usage -- python3 station/examples/fleet.py

Status 1 where a device failed. A device that hangs costs its own thread its time limit, and no other.
"""

import concurrent.futures
import os
import sys
import time

from r47_station import Console, LightBar, StationError
from r47_station.codes import PINS

TIMEOUT = float(os.environ.get("TIMEOUT", "20"))  # s, of a command


def check(console):
    for pin in PINS:
        console.set_pin(pin, True)
        if not console.pin(pin):
            return f"pin {pin} does not follow"
    console.set_light_bar(LightBar.CYAN).check()
    missing = console.check_device()
    return f"missing: {missing!r}" if missing else "passed"


def test(line):
    name, address, port = line.split()
    start = time.monotonic()
    try:
        with Console(address, int(port), patience=TIMEOUT, timeout=TIMEOUT) as console:
            result = check(console)
    except StationError as error:
        result = f"{type(error).__name__}: {error}"
    return name, result, time.monotonic() - start


def main():
    with open(os.environ["R47_FLEET"]) as file:
        lines = list(file)
    with concurrent.futures.ThreadPoolExecutor(len(lines)) as executor:
        results = list(executor.map(test, lines))
    for name, result, seconds in results:
        print(f"{name}  {seconds:.2f} s  {result}")
    return any(result != "passed" for _, result, _ in results)


if __name__ == "__main__":
    sys.exit(main())
