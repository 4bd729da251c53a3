#!/usr/bin/env python3
"""Looks at the pages of `zorctl decode --report` with Chromium.

Usage: scripts/in-namespace /usr/bin/python3 tests/cli/ReportPageTest.py ZORCTL MAKE-CAPTURE
"""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

ZORCTL, MAKE_CAPTURE = sys.argv[1:3]
CAPTURES = pathlib.Path(__file__).resolve().parent.parent / "captures"
HOSTILE_SSID = "</script><img src=x onerror=a()>"
HOSTILE_PASS = "\"'><svg/onload=alert(1)><!--<script>"
FLAGS = ("headless no-sandbox disable-gpu disable-quic no-first-run disable-background-networking"
         " disable-component-update disable-sync disable-dev-shm-usage window-size=1280,1000")


class ReportPageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        options = webdriver.ChromeOptions()
        for flag in FLAGS.split() + [f"user-data-dir={cls.folder.name}/profile"]:
            options.add_argument("--" + flag)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        cls.browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        cls.addClassCleanup(cls.browser.quit)
        cls.browser.get("about:blank")

    def make_capture(self, name, *arguments, seconds="3"):
        path = pathlib.Path(self.folder.name) / name
        subprocess.run([MAKE_CAPTURE, path, "--seconds", seconds, *arguments], check=True)
        return path

    def make_page(self, capture, *arguments):
        """Returns the page's path and the events that zorctl printed."""
        page = pathlib.Path(self.folder.name) / "report.html"
        run = subprocess.run([ZORCTL, "decode", capture, "--json", "--report", page, *arguments],
                             stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
        return page, [json.loads(line) for line in run.stdout.splitlines()]

    def open_page(self, capture, *arguments):
        """Opens a page, which may load nothing else and report no error. Returns the events."""
        page, events = self.make_page(capture, *arguments)
        self.browser.get_log("performance")
        self.browser.get(page.as_uri())
        self.browser.execute_async_script("requestAnimationFrame(() => requestAnimationFrame(arguments[0]))")
        messages = [json.loads(entry["message"])["message"] for entry in self.browser.get_log("performance")]
        urls = [message["params"]["request"]["url"] for message in messages
                if message["method"] == "Network.requestWillBeSent"]
        self.assertEqual(urls, [page.as_uri()])
        self.assertEqual(self.browser.get_log("browser"), [])
        return events

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def texts(self, selector):
        return self.browser.execute_script(
            "return [...document.querySelectorAll(arguments[0])].map((element) => element.textContent)", selector)

    def test_says_what_json_says(self):
        names = ("access-point-filters", "two-phones", "two-senders", "mixed", "no-syncs", "cut", "nothing")
        for name in names:
            with self.subTest(name):
                events = self.open_page(CAPTURES / f"{name}.pcap")
                for event in events:
                    del event["time"]
                senders = [event for event in events if event["event"] == "sender"]
                finished = events[-1]
                data = json.loads(self.find("#data").get_attribute("textContent"))
                self.assertEqual(data["senders"], senders)
                self.assertEqual(data["finished"], finished)
                completed = [event for event in events if event["event"] == "completed"]
                self.assertCountEqual(data["completed"], completed)
                self.assertEqual(len(self.texts(".credentials")), len(completed))

                verdicts = [finding["text"] for sender in senders for finding in sender["findings"]]
                shown = [text.removeprefix("also: ") for text in self.texts("#verdict .text, #verdict li")]
                self.assertEqual(shown, verdicts or [finished["verdict"]])
                self.assertEqual(self.texts("#verdict .problem"), [finished["problem"]] if name == "cut" else [])
                self.assertIn(f"{finished['frames']} frames", self.find("#verdict").text)
                for leg, text in zip((leg for sender in senders for leg in sender["legs"]), self.texts(".facts")):
                    self.assertTrue(text.startswith(f"{leg['frames']} frames in "), text)
                    self.assertIn(f"{leg['bytes_known']} of {leg['bytes_total'] or '?'} bytes", text)
                kept = [sum(int(text) for text in row) for row in self.browser.execute_script(
                    "return [...document.querySelectorAll('.timeline')].map((svg) =>"
                    " [...svg.querySelectorAll('.row ~ text + text.end')].map((e) => e.textContent)"
                    "   .filter((t) => /^[0-9]+$/.test(t)))")]
                self.assertEqual(kept, [leg["frames"] for sender in senders for leg in sender["legs"]])

    def press(self, *keys):
        for key in keys:
            self.browser.switch_to.active_element.send_keys(key)
        self.browser.execute_async_script("requestAnimationFrame(() => requestAnimationFrame(arguments[0]))")
        return self.browser.switch_to.active_element

    def test_is_used_by_keyboard(self):
        self.open_page(CAPTURES / "radiotap.pcap")
        self.assertEqual(self.press(Keys.TAB).text, "sender 02:00:00:00:00:01")
        self.assertEqual(self.press(Keys.TAB).accessible_name, "Zoom in")
        whole = self.texts(".timeline .quiet.middle")
        self.press(Keys.ENTER)
        self.assertNotEqual(self.texts(".timeline .quiet.middle"), whole)
        timeline = self.press(*[Keys.TAB] * 8)
        self.assertEqual(timeline.accessible_name, "Timeline of frames")
        self.press("0")
        self.assertEqual(self.texts(".timeline .quiet.middle"), whole)
        self.press("+", Keys.ARROW_RIGHT, "-", Keys.HOME, ".", ".", ",", ".")
        self.assertEqual(self.find("figure output").text, "frame 2, 0.001 s: broadcast sync")
        self.assertEqual(self.press(Keys.ENTER).accessible_name, "List of frames")
        self.assertEqual(len(self.texts("tbody tr")), 87)
        self.assertTrue(self.find("tr.chosen").text.startswith("2 "))
        self.assertEqual(self.press(Keys.SHIFT + Keys.TAB).tag_name, "input")
        self.press("position contra")
        self.assertEqual(self.texts("tbody tr"), [])

    def test_holds_no_secret(self):
        """Captures that differ only in their credentials make the same page, unless credentials are asked for."""
        capture = self.make_capture("run.pcap", "--pass", "aaaaaaaa")
        page, _ = self.make_page(capture)
        hidden = page.read_bytes()
        shown, _ = self.make_page(capture, "--show-secrets")
        self.assertTrue(b"aaaaaaaa" in shown.read_bytes() and b"01:00:5e:72:61:61" in shown.read_bytes())
        self.make_capture("run.pcap", "--pass", "~}|{zyxw", "--ssid", "Hzzz")
        page, _ = self.make_page(capture)
        self.assertEqual(page.read_bytes(), hidden)

    def test_says_what_is_left_out(self):
        self.open_page(self.make_capture("long.pcap", "--pace", "fast", seconds="40"))
        frames = self.find(".facts").text.split()[0]
        self.assertEqual(self.texts("summary"), [f"List of 5000 frames, the first of {frames}"])

    def test_timeline_in_the_documents_is_up_to_date(self):
        picture = pathlib.Path(self.folder.name) / "timeline.svg"
        capture = CAPTURES / "access-point-filters.pcap"
        subprocess.run([ZORCTL, "decode", capture, "--timeline", picture], stdout=subprocess.DEVNULL, check=True)
        self.assertEqual(picture.read_text(), (CAPTURES.parents[1] / "docs/decode-timeline.svg").read_text())

    def test_hostile_texts_do_nothing(self):
        capture = self.make_capture("<img src=x onerror=alert(2)>.pcap", "--ssid", HOSTILE_SSID, "--pass", HOSTILE_PASS)
        self.open_page(capture, "--show-secrets")
        self.assertEqual(self.texts(".credentials bdi"), [HOSTILE_SSID, HOSTILE_PASS])
        self.assertEqual(self.texts("h1 bdi"), [str(capture)])
        self.assertEqual(self.texts("img, script:not([type]) ~ script, [onerror], [onload]"), [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
