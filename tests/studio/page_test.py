"""The page of `aveffect studio` as somebody uses it, in a headless Chromium: page_test.py AVEFFECT [AXE]

AXE: axe-core's axe.min.js, which looks at the page too where there is one.
"""
import base64
import pathlib
import shlex
import subprocess
import sys
import tempfile
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select, WebDriverWait

PROGRAM = str(pathlib.Path(sys.argv[1]).resolve())
AXE = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else pathlib.Path()
FAULTS = (pathlib.Path(__file__).parents[1] / "manual/page_faults.js").read_text()
# Names of files are text, whatever they look like.
CLIP = "<img src=x onerror=alert(1)> 'clip'.mp4"


def pixels_of(file):
    return subprocess.run(["ffmpeg", "-v", "error", "-i", file, "-f", "rawvideo", "-pix_fmt", "rgba", "-"], capture_output=True, check=True).stdout


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.clip = str(pathlib.Path(cls.folder.name, CLIP))
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=3", "-f", "lavfi", "-i", "sine=d=3",
                        "-c:v", "libx264", "-c:a", "aac", cls.clip], check=True)
        options = webdriver.ChromeOptions()
        for word in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--force-color-profile=srgb"):
            options.add_argument(word)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        cls.browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.folder.cleanup()

    def setUp(self):
        self.expected = "\n"  # of the browser's messages
        self.studio = subprocess.Popen([PROGRAM, "studio", self.clip, "--no-browser"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.size(1280, 720)
        self.browser.get(self.studio.stdout.readline().strip())
        self.until(lambda: self.script("return document.documentElement.dataset.ready"))

    def tearDown(self):
        wrong = [entry["message"] for entry in self.browser.get_log("browser") if self.expected not in entry["message"]]
        self.browser.get("about:blank")
        self.studio.terminate()
        self.studio.communicate()
        self.assertEqual(wrong, [])

    def size(self, width, height, scheme="light"):
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": scheme}]})

    def script(self, text, *arguments):
        return self.browser.execute_script(text, *arguments)

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def until(self, true):
        return WebDriverWait(self.browser, 20).until(lambda _: true())

    def command(self, kind="render"):
        Select(self.find("#command select")).select_by_value(kind)
        return self.find("#command-text").text

    def add(self, words, effect):
        search = self.find("#search")
        search.clear()
        search.send_keys(words)
        self.find(f"[data-effect={effect}]").click()

    def exact(self):
        """The canvas's own pixels, once they are no preview any more."""
        self.until(lambda: self.script("return document.querySelector('canvas.after').dataset.exact"))
        picture = pathlib.Path(self.folder.name, "canvas.png")
        picture.write_bytes(base64.b64decode(self.script("return document.querySelector('canvas.after').toDataURL().split(',')[1]")))
        return pixels_of(picture)

    def rendered(self):
        """What the command that the page shows gives for this moment."""
        self.until(lambda: " frame " in self.command("frame"))
        words = shlex.split(self.command("frame"))
        output = str(pathlib.Path(self.folder.name, "frame.png"))
        subprocess.run([PROGRAM, "frame", words[2], output, *words[4:], "--overwrite"], check=True)
        return pixels_of(output)

    def set_slider(self, property_name, value):
        self.script("const s = document.querySelector(`[data-property=${arguments[0]}] input[type=range]`); s.value = arguments[1];"
                    "s.dispatchEvent(new Event('input', {bubbles: true}))", property_name, value)

    def test_knobs_handles_keyframes_and_the_same_pixels(self):
        self.add("pull circle", "spherize")
        slider = self.find("[data-property=spherize_scale] input[type=range]")
        before = slider.get_attribute("value")
        ActionChains(self.browser).move_to_element_with_offset(slider, 30, 0).click().perform()  # by mouse
        by_mouse = slider.get_attribute("value")
        self.assertNotEqual(by_mouse, before)
        slider.send_keys(Keys.ARROW_LEFT)  # by keyboard
        self.assertNotEqual(slider.get_attribute("value"), by_mouse)
        centre = self.find("[data-handle^=Centre]")
        ActionChains(self.browser).drag_and_drop_by_offset(centre, 60, -30).perform()
        self.until(lambda: "spherize_x=" in self.command())
        dragged = self.command()
        self.find("[data-handle^=Centre]").send_keys(Keys.ARROW_RIGHT)
        self.until(lambda: self.command() != dragged)
        self.assertEqual(self.exact(), self.rendered())

        chain = self.command()
        self.find("[data-property=spherize_scale] .key").click()
        self.script("const b = document.getElementById('bar'); b.value = 2; b.dispatchEvent(new Event('input'))")
        self.set_slider("spherize_scale", 4)
        self.until(lambda: ";2=4" in self.command())
        self.assertEqual(len(self.browser.find_elements(By.CSS_SELECTOR, ".diamond")), 2)
        self.assertEqual(self.exact(), self.rendered())

        self.find("body").send_keys(Keys.CONTROL, "z")
        self.find("body").send_keys(Keys.CONTROL, "z")
        self.until(lambda: self.command() == chain)
        self.find("body").send_keys(Keys.CONTROL, Keys.SHIFT, "z")
        self.until(lambda: "spherize_scale=0=" in self.command())

    def test_the_chain_is_ordered_switched_compared_and_comes_back_from_a_film(self):
        self.add("emboss", "emboss")
        self.add("neon", "edge-light")
        self.add("volume", "volume")
        names = lambda: [name.text.split("\n")[0] for name in self.browser.find_elements(By.CSS_SELECTOR, "#cards .name")]
        first = names()
        self.find("#cards li:nth-child(2) .name").send_keys(Keys.ALT, Keys.ARROW_UP)
        self.assertEqual(names(), [first[1], first[0], first[2]])
        grip, target = (self.find(f"#cards li:nth-child({at}) .grip") for at in (1, 3))
        ActionChains(self.browser).click_and_hold(grip).move_to_element(target).move_by_offset(0, 30).release().perform()
        self.assertEqual(names(), [first[0], first[2], first[1]])
        self.find("#cards li:nth-child(1) input.switch").click()
        self.find("#cards li:nth-child(3) [title^=Duplicate]").click()
        self.until(lambda: self.command().count("edge-light") == 2 and "emboss" not in self.command())
        self.assertTrue(self.find("#wave canvas").is_displayed())
        for mode in ("wipe", "side", "difference", "after"):
            Select(self.find("#compare")).select_by_value(mode)
            self.assertEqual(self.find("canvas.before").is_displayed(), mode != "after")
            if mode == "wipe":
                self.find(".divider").send_keys(Keys.ARROW_LEFT)
                self.assertEqual(self.find(".divider").get_attribute("aria-valuenow"), "48")
        chain, cards = self.command(), sorted(names(), key=lambda name: name.startswith("Volume"))  # a film has tracks
        film = self.find("#film-path").get_attribute("value")
        self.find("#command .line:last-child button").click()
        self.until(lambda: "Saved" in self.find("#message").text)
        subprocess.run([PROGRAM, "timeline", "check", film], check=True, stdout=subprocess.DEVNULL)

        self.browser.refresh()
        self.until(lambda: self.script("return document.documentElement.dataset.ready"))
        self.assertEqual(names(), [])
        self.find("#file-tools button").click()
        entry = f"//dialog//button[text()={self.quoted(pathlib.Path(film).name)}]"
        self.until(lambda: self.browser.find_elements(By.XPATH, entry))
        self.browser.find_element(By.XPATH, entry).click()
        self.until(lambda: names() == cards)
        self.assertTrue(self.find("#cards li:nth-child(1)").get_attribute("class").endswith("off"))
        self.until(lambda: self.command() == chain)

    @staticmethod
    def quoted(text):
        return "concat(" + ", \"'\", ".join(f"'{part}'" for part in text.split("'")) + ")"

    def test_renders_are_queued_told_and_shown(self):
        self.add("invert", "invert")
        for size in ("160x90", "64x64"):
            self.find("#render-tools button").click()
            self.find("#render-size").clear()
            self.find("#render-size").send_keys(size, Keys.TAB)
            output = self.find("#render-output").get_attribute("value").replace(".mp4", f"{size}.mp4")
            self.find("#render-output").clear()
            self.find("#render-output").send_keys(output, Keys.TAB)
            self.find("dialog[open] button.main").click()
            self.until(lambda: not self.browser.find_elements(By.CSS_SELECTOR, "dialog[open]"))
        self.until(lambda: len(self.browser.find_elements(By.CSS_SELECTOR, "[data-state=done]")) == 2)
        again = str(pathlib.Path(self.folder.name, "again.mp4"))
        subprocess.run([PROGRAM, "render", self.clip, again, "-e", "invert", "--size", "64x64"], check=True, stderr=subprocess.DEVNULL)
        self.assertEqual(pathlib.Path(output).read_bytes(), pathlib.Path(again).read_bytes())
        self.find("[data-state=done] button[title^=Show]").click()
        self.until(lambda: self.script("return document.querySelector('.result video').readyState > 0"))
        # What is there is not replaced unasked.
        self.expected = "/api/jobs - Failed to load resource: the server responded with a status of 409"
        self.find("#render-tools button").click()
        self.find("dialog[open] button.main").click()
        self.until(lambda: "exists" in self.find("dialog[open] .wrong").text)

    def test_the_keyboard_alone_does_it(self):
        self.find("#search").send_keys("mosaic censor", Keys.ENTER)
        self.until(lambda: self.browser.find_elements(By.CSS_SELECTOR, "#cards .card"))
        reached = set()
        self.find("#search").click()
        for _ in range(140):
            self.browser.switch_to.active_element.send_keys(Keys.TAB)
            reached.add(self.script("const e = document.activeElement; return e.id || e.dataset.handle || e.dataset.preset || e.className || e.title"))
        for wanted in ("bar", "compare", "zoom", "play", "First corner of Mosaic", "censor", "name", "command-text", "film-path", "pane"):
            self.assertIn(wanted, reached)

    def test_nothing_is_wrong_on_wide_and_narrow_screens_in_light_and_dark(self):
        self.add("glass", "magnifier")
        self.exact()
        faults = []
        for width, height, scheme in ((1280, 720, "light"), (1280, 720, "dark"), (360, 740, "light"), (360, 740, "dark")):
            self.size(width, height, scheme)
            faults += [f"{width} {scheme}: {fault}" for fault in self.script(FAULTS)]
            self.assertLessEqual(self.script("return document.documentElement.scrollWidth"), width)
            if AXE.is_file():
                self.script(AXE.read_text())
                found = self.browser.execute_async_script("const done = arguments[0]; axe.run({resultTypes: ['violations']}).then(r => done(r.violations), e => done(String(e)))")
                self.assertIsInstance(found, list, found)
                faults += [f"{width} {scheme}: {one['help']}: {one['nodes'][0]['html']}" for one in found if one["impact"] in ("serious", "critical")]
        self.assertEqual(faults, [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
