#!/usr/bin/python3
"""Tests of the front panel's page in headless Chromium: each hand does what it says, each picture follows the device.

tests/panel/run.sh starts it: panel_test.py R47_SIM [TEST...]
"""

import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select, WebDriverWait

R47_SIM = sys.argv.pop(1) if len(sys.argv) > 1 else "build/r47-sim"
LIMIT = 20  # s that anything may take
# Chromium's own sandbox needs rights that a container or root may not have; it loads nothing here but the panel's page.
FLAGS = ["--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--disable-gpu", "--disable-quic", "--no-first-run",
         "--disable-background-networking", "--disable-component-update", "--disable-sync",
         "--force-prefers-reduced-motion", "--window-size=1280,720"]


class Device:
    """A device in a directory of its own."""

    def __init__(self, directory):
        self.directory = directory
        self.start()

    def start(self):
        self.process = subprocess.Popen([R47_SIM, "device", "--name", self.directory, "--clock", "stepped"],
                                        stdout=subprocess.PIPE, text=True)
        assert self.process.stdout.readline().startswith("device ")

    def end(self):
        self.process.terminate()
        status = self.process.wait(timeout=LIMIT)
        self.process.stdout.close()
        return status

    def give(self, command):
        return subprocess.run([R47_SIM, "--device", self.directory, "-"], input=command + "\n", text=True, check=True,
                              stdout=subprocess.PIPE).stdout

    def value(self, name):
        """As `show` prints it; the first word."""
        return self.give(f"show {name}").split()[1]


class Panel:
    """A panel, and its address."""

    def __init__(self, device):
        self.process = subprocess.Popen([R47_SIM, "panel", "--device", device.directory],
                                        stdout=subprocess.PIPE, text=True)
        self.address = self.process.stdout.readline().split()[1]

    def end(self):
        self.process.send_signal(signal.SIGINT)
        status = self.process.wait(timeout=LIMIT)
        self.process.stdout.close()
        return status


def start_browser(profile):
    options = Options()
    for flag in [*FLAGS, f"--user-data-dir={profile}"]:
        options.add_argument(flag)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


class PanelTest(unittest.TestCase):
    """A device and a panel for each test, one browser for all."""

    @classmethod
    def setUpClass(cls):
        cls.profile = tempfile.TemporaryDirectory(prefix="r47-panel-")
        cls.browser = start_browser(cls.profile.name)

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.profile.cleanup()

    def setUp(self):
        self.directory = tempfile.TemporaryDirectory(prefix="r47-panel-")
        self.device = Device(str(pathlib.Path(self.directory.name, "device")))
        self.panel = Panel(self.device)
        self.browser.get(self.panel.address)
        self.shows("device-state", "1 boot")

    def tearDown(self):
        complaints = [entry["message"] for entry in self.browser.get_log("browser")
                      if "ERR_INCOMPLETE_CHUNKED" not in entry["message"]]
        self.browser.get("about:blank")
        statuses = [self.panel.end(), self.device.end()]
        self.directory.cleanup()
        self.assertEqual(complaints, [])
        self.assertEqual(statuses, [0, 0], "a panel or device did not end well")

    def until(self, question, what):
        WebDriverWait(self.browser, LIMIT, poll_frequency=0.05).until(lambda _: question(), what)

    def find(self, name):
        return self.browser.find_element(By.ID, name)

    def text(self, name):
        return self.browser.execute_script("return document.getElementById(arguments[0]).textContent", name)

    def attribute(self, name, attribute):
        return self.find(name).get_attribute(attribute)

    def shows(self, name, text):
        self.until(lambda: text in self.text(name), f"{name} never shows {text}, but {self.text(name)}")

    def becomes(self, name, attribute, value):
        self.until(lambda: self.attribute(name, attribute) == value, f"{attribute} of {name} is never {value}")

    def device_becomes(self, name, value):
        self.until(lambda: self.device.value(name) == value, f"{name} is never {value}")

    def button(self, text):
        return self.browser.find_element(By.XPATH, f"//button[normalize-space()='{text}' or "
                                         f"starts-with(normalize-space(), '{text} ')]")

    def commands(self):
        """What the page lists, the newest first."""
        return [element.text for element in self.browser.find_elements(By.CSS_SELECTOR, "#command-list code")]

    def run_console(self, keys):
        if not RUNS_PROGRAMS:
            self.skipTest("this build runs no program in the sandbox that the host allows")
        subprocess.run([R47_SIM, "run", "--device", self.device.directory, "--", CONSOLE], input=keys, text=True,
                       check=True, stdout=subprocess.DEVNULL)

    def set_range(self, name, value):
        self.browser.execute_script("""
            const input = document.getElementById(arguments[0]);
            input.value = arguments[1];
            input.dispatchEvent(new Event("input", {bubbles: true}));
            input.dispatchEvent(new Event("change", {bubbles: true}));""", name, value)


class PictureTest(PanelTest):
    """Each picture follows the device, whoever changes it."""

    def test_device_state(self):
        self.device.give("set system.state 5")
        self.shows("device-state", "5 warning")
        self.device.give("power off")
        self.shows("device-state", "no power")

    def test_lens_moves_as_the_motor_does(self):
        before = self.attribute("lens", "transform")
        self.device.give("set autofocus.target 2100\nstep 1s")
        self.shows("focus-text", "1100 of 2100 steps")
        middle = self.attribute("lens", "transform")
        self.device.give("step 1s")
        self.shows("focus-text", "2100 of 2100 steps")
        self.assertEqual(len({before, middle, self.attribute("lens", "transform")}), 3)

    def test_segments_are_lit_in_their_colour_and_brightness(self):
        self.device.give("set illumination.segments 5\nset illumination.brightness.red 100")
        self.becomes("segment-0", "stroke", "rgb(255, 0, 0)")
        self.assertEqual(self.attribute("segment-2", "stroke"), "rgb(255, 0, 0)")
        self.assertNotEqual(self.attribute("segment-1", "stroke"), "rgb(255, 0, 0)")
        bright = float(self.attribute("segment-0", "stroke-opacity"))
        self.device.give("set illumination.brightness.red 10")
        self.until(lambda: float(self.attribute("segment-0", "stroke-opacity")) < bright, "it never dims")

    def test_indicator_leds(self):
        dark = self.attribute("led-green", "fill")
        self.device.give("set illumination.led.green true")
        self.until(lambda: self.attribute("led-green", "fill") != dark, "the LED stays dark")
        self.assertEqual(self.attribute("led-red", "fill"), dark)

    def test_light_bar_shows_what_a_program_sets(self):
        dark = self.attribute("lightbar", "fill")
        self.run_console("a\nO\nx\nx\n")
        self.becomes("lightbar", "fill", "rgb(0, 255, 255)")
        self.run_console("a\no\nx\nx\n")
        self.becomes("lightbar", "fill", "rgb(255, 0, 0)")
        self.device.give("power cycle")
        self.becomes("lightbar", "fill", dark)

    def test_pins(self):
        self.device.give("set dio.3.func 2\nset dio.3.type 1\ndrive 3 high")
        self.becomes("pin-3", "data-level", "high")
        self.becomes("pin-3", "data-value", "true")
        for word in ("in", "input", "pnp", "on"):
            self.assertIn(word, self.text("pin-3"))
        self.assertIn("output", self.text("pin-2"))

    def test_frames_and_missed_triggers(self):
        self.device.give("trigger 3\nstep 1s")
        self.shows("frames-imx296", "1")
        self.shows("missed", "2")

    def test_temperatures_as_curves_with_their_limits(self):
        self.device.give("set illumination.brightness.total 14\nstep 30s")
        curve = self.browser.find_element(By.CSS_SELECTOR, ".curve.inside")
        self.until(lambda: float(self.text("inside").split()[0]) > 30, "it stays cold")
        self.until(lambda: len(curve.get_attribute("points").split()) > 1, "there is no curve")
        warm = float(self.text("inside").split()[0])
        self.device.give("step 60s")
        self.until(lambda: float(self.text("inside").split()[0]) > warm, "it does not get warmer")
        self.device.give("set illumination.limit.ot_off 60")
        self.shows("off-limit", "60")
        self.shows("off-limit", "too hot")

    def test_body_turns(self):
        lens = lambda: self.browser.find_element(By.CSS_SELECTOR, "#body .barrel").get_attribute("points")
        level = lens()
        self.device.give("tilt 10 20 30")
        self.shows("yaw-text", "10.0")
        self.shows("pitch-text", "20.0")
        self.shows("roll-text", "30.0")
        self.assertNotEqual(lens(), level)

    def test_ranging_grid_as_heat_map(self):
        self.device.give("set ranging.crosstalk.pull 0\nscene step 500 1500")
        cells = lambda: self.browser.execute_script(
            "return [...document.querySelectorAll('#grid text')].map(cell => cell.textContent)")
        self.until(lambda: cells() == ["500", "500", "1500", "1500"] * 4, "the scene is never seen")
        fills = [zone.get_attribute("fill") for zone in self.browser.find_elements(By.CSS_SELECTOR, "#grid rect")]
        self.assertEqual(len(set(fills)), 2)
        self.device.give("set ranging.resolution 64")
        self.until(lambda: len(cells()) == 64, "there are never 64 zones")

    def test_journal_runs_along_with_a_filter(self):
        self.device.give("set system.state 5\ndrive 1 high\nset system.state 6")
        self.shows("lines", "set system.state 6")
        self.find("filter").send_keys("drive")
        self.until(lambda: "set system.state" not in self.text("lines"), "the filter lets everything pass")
        self.assertIn("drive 1 high", self.text("lines"))

    def test_fault_is_seen_to_fire(self):
        self.device.give("fault add rtu_t::get_exposure status -1")
        self.shows("fault-list", "rtu_t::get_exposure status -1")
        self.shows("fault-list", "fired 0")
        self.run_console("b\nE\nx\nx\n")
        self.shows("fault-list", "fired 1")
        self.assertTrue(self.browser.find_elements(By.CSS_SELECTOR, "#fault-list .fires"))


class HandTest(PanelTest):
    """Each hand does what it says to the device, and is shown as a command."""

    def test_button_is_held_for_as_long_as_it_is_pressed(self):
        ActionChains(self.browser).click_and_hold(self.find("press")).perform()
        self.device_becomes("button.pressed", "true")
        self.becomes("press", "aria-pressed", "true")
        ActionChains(self.browser).release().perform()
        self.device_becomes("button.pressed", "false")
        self.until(lambda: self.commands()[:2] == ["button up", "button down"], "the commands are not shown")

    def test_button_is_held_by_a_key(self):
        self.browser.execute_script("document.getElementById('press').focus()")
        ActionChains(self.browser).key_down(Keys.SPACE).perform()
        self.device_becomes("button.pressed", "true")
        ActionChains(self.browser).key_up(Keys.SPACE).perform()
        self.device_becomes("button.pressed", "false")

    def test_drag_tilts(self):
        body = self.find("body")
        ActionChains(self.browser).click_and_hold(body).move_by_offset(40, 20).release().perform()
        self.device_becomes("orientation.yaw", "20")
        self.device_becomes("orientation.pitch", "10")
        self.until(lambda: self.commands() == ["tilt 20 10 0"], f"a drag is not one line, but {self.commands()}")

    def test_sliders_tilt(self):
        self.set_range("roll", 45)
        self.device_becomes("orientation.roll", "45")
        self.find("level").click()
        self.device_becomes("orientation.roll", "0")

    def test_click_on_a_wire_drives_it(self):
        for level in ("high", "low", "open"):
            self.device.give("set dio.1.func 2")
            self.find("wire-1").click()
            self.device_becomes("dio.1.terminal", level)
            self.becomes("pin-1", "data-level", level)
        self.assertEqual(self.commands(), ["drive 1 open", "drive 1 low", "drive 1 high"])

    def test_power_and_supply(self):
        self.find("power").click()
        self.device_becomes("power", "false")
        self.shows("power", "Power off")
        self.find("power").click()
        self.device_becomes("power", "true")
        self.button("PoE").click()
        self.device_becomes("rtu.power", "poe")
        self.shows("supply", "PoE")

    def test_sensor(self):
        self.button("IMX567").click()
        self.device_becomes("camera.fitted", "2")
        self.button("no sensor").click()
        self.device_becomes("camera.fitted", "0")

    def test_scene(self):
        Select(self.find("shape")).select_by_visible_text("hole")
        self.find("scene-words").clear()
        self.find("scene-words").send_keys("600 1500", Keys.ENTER)
        self.shows("ranging-text", "hole 600 1500")
        self.assertEqual(self.commands(), ["scene hole 600 1500"])

    def test_module_is_pulled_and_put_back(self):
        self.button("Autofocus").click()
        self.device_becomes("autofocus.present", "false")
        self.button("Ranging").click()
        self.until(lambda: "missing  /dev/r47-tof-driver" in self.device.give("node list"), "the node stays")
        self.until(lambda: "pulled" in self.button("Ranging").text, "the page does not show it")
        self.button("Ranging").click()
        self.until(lambda: "present  /dev/r47-tof-driver" in self.device.give("node list"), "the node stays away")

    def test_fault_is_added_and_cleared(self):
        self.find("fault-operation").clear()
        self.find("fault-operation").send_keys("rtu_t::get_exposure")
        Select(self.find("fault-count")).select_by_visible_text("once")
        self.browser.find_element(By.CSS_SELECTOR, "#fault-form button").click()
        self.shows("fault-list", "rtu_t::get_exposure count 1 status -1")
        self.browser.find_element(By.CSS_SELECTOR, "#fault-list button").click()
        self.until(lambda: self.device.give("fault list") == "", "the rule stays")

    def test_clock_is_stepped_and_scaled(self):
        self.button("+1 s").click()
        self.device_becomes("clock.time", "1")
        Select(self.find("clock-mode")).select_by_visible_text("10 times")
        self.until(lambda: self.device.give("clock").strip() == "scaled 10", "the clock is not scaled")
        self.until(lambda: not self.button("+1 s").is_enabled(), "a clock that runs is stepped")

    def test_focus_and_trigger(self):
        self.set_range("focus", 500)
        self.device_becomes("autofocus.target", "500")
        self.button("Trigger").click()
        self.device_becomes("rtu.trigger.count", "1")
        self.button("Continuous").click()
        self.device_becomes("rtu.trigger.continuous", "true")

    def test_typed_command_and_its_refusal(self):
        self.find("command").send_keys("set system.state 9", Keys.ENTER)
        self.device_becomes("system.state", "9")
        self.until(lambda: self.commands() == ["set system.state 9"], "it is not shown")
        self.find("command").send_keys("set system.state 8", Keys.ENTER)
        self.shows("reply", "8 is not one of")
        self.assertEqual(self.commands(), ["set system.state 9"])

    def test_commands_are_copied_as_a_scenario(self):
        self.browser.execute_script("""
            window.copied = "";
            Object.defineProperty(navigator, "clipboard",
                {value: {writeText: async text => { window.copied = text; }}});""")
        self.button("PoE").click()
        self.until(lambda: self.commands() == ["power poe"], "it is not shown")
        self.browser.find_element(By.CSS_SELECTOR, "#command-list button").click()
        self.until(lambda: self.browser.execute_script("return window.copied") == "power poe", "it is not copied")
        self.button("+1 s").click()
        self.shows("time", "1.00 s")
        self.find("power").click()
        self.until(lambda: self.commands()[0] == "power off", "it is not shown")
        self.find("copy-all").click()
        self.until(lambda: "power off" in self.browser.execute_script("return window.copied"), "nothing is copied")
        scenario = self.browser.execute_script("return window.copied")
        self.assertEqual(scenario, "# From the front panel.\n+0.000s  power poe\n+1.000s  power off\n")
        file = pathlib.Path(self.directory.name, "scenario")
        file.write_text(scenario)
        subprocess.run([R47_SIM, "run", "--clock", "stepped", "--scenario", str(file), "--", "true"], check=True)


class PageTest(PanelTest):
    """The page as a whole."""

    def test_lost_device_is_said_and_found_again(self):
        self.device.end()
        self.until(lambda: self.find("lost").is_displayed(), "the page does not say so")
        self.device.start()
        self.until(lambda: not self.find("lost").is_displayed(), "the device is not found again")
        self.device.give("set system.state 5")
        self.shows("device-state", "5 warning")

    def test_interrupt_ends_the_panel_at_once_though_pages_are_open(self):
        self.assertEqual(self.panel.end(), 0)
        self.shows("lost", "does not answer")
        self.browser.get_log("browser")  # that it is gone is what the browser says, too
        self.panel = Panel(self.device)

    def test_panel_beside_a_process_ends_with_it(self):
        with subprocess.Popen(["cat"], stdin=subprocess.PIPE) as neighbour:
            started = subprocess.run([R47_SIM, "panel", "--device", self.device.directory,
                                      "--beside", str(neighbour.pid)],
                                     stdout=subprocess.PIPE, text=True, check=True)
            self.browser.get(started.stdout.split()[1])
            self.shows("device-state", "1 boot")
        self.shows("lost", "does not answer")
        self.browser.get_log("browser")

    def test_everything_that_is_operated_has_a_name_and_is_reached_by_key(self):
        unnamed = self.browser.execute_script("""
            return [...document.querySelectorAll("button, input, select, svg[role=img], section, [role=group]")]
                .filter(element => !(element.ariaLabel || element.textContent.trim() || element.labels?.length ||
                                     document.getElementById(element.getAttribute("aria-labelledby"))?.textContent))
                .map(element => element.outerHTML)""")
        self.assertEqual(unnamed, [])
        hidden = self.browser.execute_script("""
            return [...document.querySelectorAll("button, input, select")]
                .filter(element => element.tabIndex < 0).map(element => element.outerHTML)""")
        self.assertEqual(hidden, [])

    def set_view(self, width, height, scheme):
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                     {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 500})
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia",
                                     {"features": [{"name": "prefers-color-scheme", "value": scheme}]})

    def test_page_fits_a_screen_and_a_phone(self):
        for width, height in ((1280, 720), (800, 600), (390, 844), (320, 640)):
            self.set_view(width, height, "light")
            beyond = self.browser.execute_script("""
                return [...document.querySelectorAll("section, button, input, select, header")]
                    .filter(element => element.getBoundingClientRect().right > innerWidth + 1)
                    .map(element => element.outerHTML.slice(0, 120))""")
            self.assertEqual(beyond, [], f"{width} pixels wide")
        self.browser.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})

    def test_picture_commands_and_journal_are_in_sight_without_scrolling(self):
        self.set_view(1280, 720, "light")
        self.device.give("\n".join(["drive 1 high", "drive 1 low"] * 50))
        for state in ("5", "6", "9"):
            self.find("command").send_keys(f"set system.state {state}", Keys.ENTER)
            self.until(lambda: self.attribute("command", "value") == "", "it is not given")
            self.shows("lines", f"set system.state {state}")
        below = self.browser.execute_script("""
            scrollTo(0, 0);
            const parts = ["#front", "#press", "#pin-list", "#command", "#command-list li", "#filter", "#lines", "#lines p:last-child"];
            return parts.filter(part => document.querySelector(part).getBoundingClientRect().bottom > innerHeight);""")
        self.assertEqual(below, [])
        self.browser.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})

    def test_text_has_contrast_in_light_and_dark(self):
        for scheme in ("light", "dark"):
            self.set_view(1280, 720, scheme)
            pale = self.browser.execute_script(CONTRAST)
            self.assertEqual(pale, [], scheme)
        self.browser.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


# Texts outside of pictures with less contrast than 4.5 to what is behind them.
CONTRAST = """
    const parts = colour => colour.match(/[\\d.]+/g).map(Number);
    const luminance = rgb => rgb.slice(0, 3).map(c => c / 255)
        .map(c => c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4)
        .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
    const behind = element => {
        for (let e = element; e; e = e.parentElement) {
            const colour = parts(getComputedStyle(e).backgroundColor);
            if (colour.length === 3 || colour[3] === 1) return colour;
        }
        return [255, 255, 255];
    };
    return [...document.querySelectorAll("body *")]
        .filter(e => !e.closest("svg") && !e.closest(":disabled, [hidden]") &&
                     [...e.childNodes].some(n => n.nodeType === 3 && n.textContent.trim()))
        .map(e => {
            const [one, other] = [luminance(parts(getComputedStyle(e).color)), luminance(behind(e))];
            return [(Math.max(one, other) + 0.05) / (Math.min(one, other) + 0.05), e.outerHTML.slice(0, 90)];
        }).filter(([contrast]) => contrast < 4.5);"""

# Without namespaces what a sanitizer has built cannot run: both trace it.
RUNS_PROGRAMS = subprocess.run([R47_SIM, "run", "--", "true"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               check=False).returncode == 0

CONSOLE = os.path.join(os.path.dirname(R47_SIM), "r47-console")

if __name__ == "__main__":
    unittest.main(verbosity=2)
