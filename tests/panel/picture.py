#!/usr/bin/python3
"""Makes the picture of the README from the real page: tests/panel/picture.py [R47_SIM], after tests/panel/run.sh."""

import pathlib
import subprocess
import sys
import tempfile
import time

R47_SIM = sys.argv[1] if len(sys.argv) > 1 else "build/r47-sim"
sys.argv[1:] = [R47_SIM]
from panel_test import CONSOLE, Device, Panel, start_browser  # noqa: E402

WIDTH, HEIGHT = 1280, 720
BEFORE = """set system.state 3
set illumination.led.green true
set illumination.segments 15
set rtu.trigger.rate 8
set dio.2.func 2
set dio.2.type 1
drive 2 high
set dio.3.func 3
set dio.3.type 1
drive 3 low
set dio.1.func 1
set dio.4.func 4
set dio.5.func 5
set autofocus.target 1900
tilt 28 14 -9
scene tilted 420 48 20
fault add rtu_t::get_exposure every 2 status -1"""
# While the page looks: warm up, cool down, warm up again.
STEPS = [*["step 2s"] * 2, "set illumination.brightness.total 11", *["step 4s"] * 30,
         "set illumination.brightness.total 0", *["step 4s"] * 14,
         "set illumination.brightness.blue 70", "set illumination.brightness.total 4", *["step 4s"] * 22,
         "trigger 3", "set rtu.trigger.continuous true", "step 12s", "trigger 1"]
KEYS = "A\na\nO\nx\nb\nA\nE\nE\nE\np\nB\nE\nx\nx\n"


def main():
    subprocess.run(["packaging/install_packages.sh", "pngquant"], check=True)
    with tempfile.TemporaryDirectory() as profile, tempfile.TemporaryDirectory() as directory:
        device = Device(str(pathlib.Path(directory, "device")))
        device.give(BEFORE)
        panel = Panel(device)
        browser = start_browser(profile)
        browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                {"width": WIDTH, "height": HEIGHT, "deviceScaleFactor": 1, "mobile": True})
        browser.execute_cdp_cmd("Emulation.setEmulatedMedia",
                                {"features": [{"name": "prefers-color-scheme", "value": "dark"}]})
        browser.get(panel.address)
        time.sleep(1)
        for command in STEPS:
            device.give(command)
            time.sleep(0.1)  # for the page to draw a point of the curves
        subprocess.run([R47_SIM, "run", "--device", device.directory, "--", CONSOLE], input=KEYS, text=True,
                       stdout=subprocess.DEVNULL, check=True)
        for name in ("wire-5", "level"):
            browser.execute_script("document.getElementById(arguments[0]).click()", name)
        device.give("tilt 28 14 -9")
        time.sleep(1)
        whole = browser.execute_script("return document.documentElement.scrollHeight")
        browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                {"width": WIDTH, "height": whole, "deviceScaleFactor": 1, "mobile": True})
        time.sleep(1)
        browser.save_screenshot("docs/front-panel.png")
        browser.quit()
        panel.end()
        device.end()
    subprocess.run(["pngquant", "--force", "--ext", ".png", "docs/front-panel.png"], check=True)


main()
