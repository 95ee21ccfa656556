"""The page in a real browser: a line in training, in showtime, one that drops and comes back while the page is open.
usage: check_page.py GFAST-LAB GFAST-REPORT BOARD-FILES-FOLDER [SCREENSHOTS-FOLDER]
"""
import contextlib
import os
import subprocess
import sys

from lab import Lab, need, skip, wait_for

need("chromium", "chromedriver")
try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
except ImportError:
    skip("python3-selenium is not installed")

program, reporter, boards = sys.argv[1:4]
screenshots = sys.argv[4] if len(sys.argv) > 4 else None


class Browser:
    def __init__(self):
        options = webdriver.ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        # Nothing but this machine: a name that the page asked for would not be found.
        for flag in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                     "--host-resolver-rules=MAP * ~NOTFOUND , EXCLUDE 127.0.0.1"):
            options.add_argument(flag)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        self.driver.set_window_size(1100, 1500)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.driver.quit()

    def open(self, lab):
        self.driver.get(f"http://{lab.address}/")

    def text(self, selector):
        """Empty where the page shows no such element, or not yet."""
        found = "const found = document.querySelector(arguments[0]); return found ? found.textContent : ''"
        return self.driver.execute_script(found, selector)

    def await_text(self, selector, text, seconds=30):
        wait_for(lambda: text in self.text(selector), seconds, f"{text!r} in {selector}: {self.text(selector)!r}")

    def script(self, text, *arguments):
        return self.driver.execute_script("return " + text, *arguments)

    def save(self, name):
        if screenshots:
            self.driver.save_screenshot(os.path.join(screenshots, name))

    def dark(self, on):
        value = "dark" if on else "light"
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": value}]})

    def expect_no_errors(self):
        errors = [entry for entry in self.driver.get_log("browser") if entry["level"] == "SEVERE"]
        assert not errors, errors


@contextlib.contextmanager
def page_of(browser, board):
    """A lab with its page open; the page is left before the lab ends."""
    with Lab(program, board) as lab:
        browser.open(lab)
        yield lab
        browser.driver.get("about:blank")


def table(browser, name, direction):
    return browser.script(f"shown.{direction}.{name}")


def in_showtime(browser):
    with page_of(browser, '[[device]]\nline = "showtime"\n') as lab:
        browser.await_text("#lines", "showtime")
        wait_for(lambda: browser.script("shown !== null"), 30, "tones")
        figures = browser.text("#lines")
        assert "Mbit/s" in figures and "dB" in figures and "dBm" in figures, figures
        # What is drawn is what the line has: tones without a value have none, and none is 95.5 dB.
        snr = table(browser, "snr", "ds")
        assert len(snr) == 2048 and snr[0] is None and max(v for v in snr if v is not None) < 95
        hlog = table(browser, "hlog", "us")
        assert hlog[100] > hlog[1900], "a cable attenuates high tones more"
        assert browser.script("document.querySelectorAll('.plot canvas').length") >= 8
        assert browser.text("#findings") == "", browser.text("#findings")
        # The day so far.
        assert browser.script("days.dayrate.getValue(0, 1)") > 100 and browser.script("days.daymargin.getValue(0, 2)") > 3
        # The cursor, by pointer and by key.
        plot = browser.driver.find_element(By.ID, "snr")
        before = browser.script("tone")
        plot.send_keys(Keys.ARROW_RIGHT)
        assert browser.script("tone") == before + 1
        browser.await_text("#cursor", f"tone {before + 1}, {(before + 1) * 0.05175:.3f} MHz")
        assert f"SNR {snr[before + 1]:.1f} dB" in browser.text("#cursor")
        plot.send_keys("+")
        assert browser.script("band[1] - band[0]") < 1100
        plot.send_keys("0")
        assert browser.script("band[1] - band[0]") == 2047
        browser.save("page-showtime.png")
        browser.dark(True)
        browser.save("page-dark.png")
        browser.dark(False)
        # Compared with a kept reading: the same twice over.
        kept = os.path.join(lab.folder.name, "kept.json")
        with open(kept, "wb") as file:
            file.write(lab.get("/data/lines/0.json"))
        browser.driver.find_element(By.ID, "compare").send_keys(kept)
        browser.await_text("#cursor", "before:")
        # Narrow as a telephone: nothing is wider than the window.
        browser.driver.set_window_size(400, 900)
        browser.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {"width": 400, "height": 900, "deviceScaleFactor": 1, "mobile": False})
        assert browser.script("document.documentElement.scrollWidth") <= 400
        browser.save("page-narrow.png")
        browser.driver.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})
        browser.driver.set_window_size(1100, 1500)
        requests = browser.script("performance.getEntriesByType('resource').map((entry) => new URL(entry.name).host)")
        assert set(requests) <= {lab.address}, requests


# The chip says "training" for as long as the test looks; a line trains for two seconds only.
TRAINING = """[[device]]
line = "training"
[[memory]]
device = 0
address = 0xE1000024
bytes = "05 00 00 00"
"""


def in_training(browser):
    with page_of(browser, TRAINING) as lab:
        browser.await_text("#lines button", "line0: training")
        browser.driver.find_element(By.CSS_SELECTOR, "#lines button").click()
        assert browser.script("shown === null") and not browser.driver.find_element(By.ID, "plots").is_displayed()
        assert "Mbit/s" not in browser.text("#lines button")
        browser.save("page-training.png")


# A station that both wires hear: 9.6 MHz, on from the start.
RADIO = """[[device]]
line = "showtime"
[[line_fault]]
kind = "radio"
at_m = 50
frequency_mhz = 9.6
width_khz = 200
level_dbm_hz = -70
[[line_fault]]
kind = "imbalance"
at_m = 80
balance_db = 25
"""


def with_a_radio_station(browser):
    if not os.path.exists(os.path.join(boards, "line-radio.toml")):
        print("with_a_radio_station: these boards have none")
        return
    with page_of(browser, RADIO) as lab:
        wait_for(lambda: browser.script("shown !== null"), 40, "tones")
        snr = table(browser, "snr", "ds")
        quiet = [v for tone, v in enumerate(snr) if v is not None and 100 <= tone <= 300 and abs(tone * 0.05175 - 9.6) > 1]
        lowest = min((v, tone) for tone, v in enumerate(snr) if v is not None and 100 <= tone <= 300)
        assert abs(lowest[1] * 0.05175 - 9.6) < 0.2, lowest
        assert lowest[0] < sorted(quiet)[len(quiet) // 2] - 6, lowest
        browser.await_text("#findings", "A radio station at 9.6 MHz (31 m broadcasting)")
        browser.save("page-radio.png")


def with_a_mask(browser):
    with open(os.path.join(boards, "faults", "masked-band.toml")) as file:
        board = file.read().replace('side = "dp"\n', 'side = "dp"\nline = "showtime"\n')
    with page_of(browser, board):
        wait_for(lambda: browser.script("shown !== null"), 40, "tones")
        assert [100, 1600] in browser.script("masks"), browser.script("masks")
        browser.script("moveTo(1600)")
        browser.await_text("#cursor", "tone 1600, 82.800 MHz, masked")
        browser.script("moveTo(1601)")
        assert "masked" not in browser.text("#cursor")
        # The mask is darker than a tone beside it.
        pixel = """(() => { const graph = graphs.snr; const canvas = graph.hidden_; const area = graph.getArea();
            const scale = canvas.width / canvas.clientWidth; const at = (tone) => canvas.getContext('2d').getImageData(
              Math.round(graph.toDomXCoord(tone) * scale), Math.round((area.y + 3) * scale), 1, 1).data[3];
            return [at(1000), at(1650)]; })()"""
        masked, beside = browser.script(pixel)
        assert masked > 80 > beside, (masked, beside)
        browser.save("page-mask.png")


def drops_and_comes_back(browser):
    board = '[[device]]\nline = "showtime"\n[[loop_event]]\nat_s = 8\ncut = true\n[[loop_event]]\nat_s = 18\ncut = false\n'
    with page_of(browser, board) as lab:
        browser.await_text("#lines", "showtime")
        wait_for(lambda: browser.script("shown !== null"), 30, "tones")
        browser.await_text("#lines", "loss of signal", 40)
        wait_for(lambda: browser.script("shown === null"), 20, "no tones of a line that is down")
        browser.save("page-down.png")
        browser.await_text("#lines", "Mbit/s", 60)
        wait_for(lambda: browser.script("shown !== null"), 30, "tones again")
        browser.await_text("#events", "show time to deactivating 1")
        browser.await_text("#events", "loss of signal")


def as_one_file(browser):
    """The page that gfast-report writes, when the console that it was read from is gone."""
    with Lab(program, os.path.join(boards, "faults", "bridged-tap.toml")) as lab:
        lab.await_output("to show time")
        file = os.path.join(lab.folder.name, "line.html")
        subprocess.run([reporter, "--from", f"127.0.0.1:{lab.console}", "-o", file], check=True, timeout=60)
        browser.driver.get(f"file://{file}")
        lab.process.kill()
        browser.driver.refresh()
        browser.await_text("#lines", "line0: showtime")
        wait_for(lambda: browser.script("shown !== null"), 10, "tones")
        browser.await_text("#findings", "A bridged tap of about 5.0 m")
        assert browser.text("#read").startswith("Read "), browser.text("#read")
        assert browser.text("#told").startswith("Network end: "), browser.text("#told")
        assert max(v for v in table(browser, "bits", "ds") if v is not None) == 12
        browser.save("report.png")
        browser.driver.get("about:blank")


with Browser() as browser:
    for case in (in_showtime, in_training, with_a_radio_station, with_a_mask, drops_and_comes_back, as_one_file):
        case(browser)
        print(case.__name__, "passed")
    browser.expect_no_errors()
