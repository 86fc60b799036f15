"""Opens every page of the manual in a headless Chromium: browser_test.py HTML AVEFFECT [AXE]

AXE: axe-core's axe.min.js, which looks at the pages too where there is one.
"""
import pathlib
import re
import subprocess
import sys
import unittest
from html.parser import HTMLParser

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

HTML = pathlib.Path(sys.argv[1])
PROGRAM = sys.argv[2]
AXE = pathlib.Path(sys.argv[3]) if len(sys.argv) > 3 else pathlib.Path()
PAGES = sorted(HTML.rglob("*.html"))
FAULTS = (pathlib.Path(__file__).parent / "page_faults.js").read_text()


class References(HTMLParser):
    """What a page refers to, and the anchors that it has."""

    def __init__(self, page):
        super().__init__()
        self.files, self.anchors = [], set()
        self.feed(page.read_text())

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("href", "src", "srcset"):
                self.files.append(value)
            if name == "id":
                self.anchors.add(value)


class Manual(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        options = webdriver.ChromeOptions()
        for word in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage"):
            options.add_argument(word)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        cls.browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()

    def show(self, width, scheme="light", motion="no-preference"):
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                     {"width": width, "height": 800, "deviceScaleFactor": 1, "mobile": False})
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [
            {"name": "prefers-color-scheme", "value": scheme}, {"name": "prefers-reduced-motion", "value": motion}]})

    def open(self, page):
        self.browser.get((HTML / page).as_uri())

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def script(self, text):
        return self.browser.execute_script(text)

    def cards(self):
        return self.script("return [...document.querySelectorAll('.card')].filter(c => c.offsetParent)"
                           ".map(c => c.querySelector('code').textContent)")

    def test_references_lead_to_what_is_there_and_nowhere_else(self):
        pages = {page: References(page) for page in PAGES}
        self.assertGreater(len(pages), 49)
        for page, references in pages.items():
            for reference in references.files:
                name, _, anchor = reference.partition("#")
                target = (page.parent / name).resolve() if name else page
                self.assertTrue(target.is_file(), f"{page.name}: {reference}")
                if anchor:
                    self.assertIn(anchor, pages[target].anchors, f"{page.name}: {reference}")
        self.assertLess(sum(file.stat().st_size for file in HTML.rglob("*") if file.is_file()), 25e6)

    def test_pages_have_no_faults_on_a_narrow_screen_in_light_and_dark(self):
        faults = []
        for page in PAGES:
            self.show(360)
            self.open(page.relative_to(HTML))
            self.script("document.querySelectorAll('img').forEach(i => i.loading = 'eager')")
            broken = self.browser.execute_async_script(
                "const done = arguments[0]; Promise.allSettled([...document.images].map(i => i.decode()))"
                ".then(r => done(r.filter(x => x.status !== 'fulfilled').length))")
            found = [f"{broken} pictures don't decode"] if broken else []
            found += self.script(FAULTS)
            self.show(360, "dark")
            found += self.script(FAULTS)
            found += [entry["message"] for entry in self.browser.get_log("browser")]
            faults += [f"{page.name}: {fault}" for fault in found]
        self.assertEqual(faults, [])

    @unittest.skipUnless(AXE.is_file(), "axe-core is not there")
    def test_axe_finds_nothing_serious(self):
        axe, faults = AXE.read_text(), []
        for page in PAGES:
            for scheme in ("light", "dark"):
                self.show(360, scheme)
                self.open(page.relative_to(HTML))
                self.script(axe)
                found = self.browser.execute_async_script(
                    "const done = arguments[0]; axe.run({preload: false, resultTypes: ['violations']}).then(r => done(r.violations), e => done(String(e)))")
                self.assertIsInstance(found, list, found)
                faults += [f"{page.name}, {scheme}: {fault['help']}: {fault['nodes'][0]['html']}" for fault in found
                           if fault["impact"] in ("serious", "critical")]
        self.assertEqual(faults, [])

    def test_search_and_kinds_are_used_by_keyboard(self):
        self.show(1000)
        self.open("index.html")
        everything = len(self.cards())
        search = self.find("#search")
        search.send_keys("negative")
        self.assertIn("invert", self.cards())
        self.assertLess(len(self.cards()), 5)
        search.send_keys(Keys.BACKSPACE * 8)
        self.assertEqual(len(self.cards()), everything)
        search.send_keys(Keys.TAB)
        self.browser.switch_to.active_element.send_keys(Keys.ARROW_LEFT)  # from the first kind to the last
        self.assertEqual(sorted(self.cards()), ["fade-sound", "replace-sound", "volume"])
        search.send_keys("volume", Keys.ENTER)
        self.assertTrue(self.browser.current_url.endswith("/effects/volume.html"))

    def test_the_slider_moves_by_keyboard_and_mouse(self):
        self.show(1000)
        self.open("effects/invert.html")
        slider = self.find(".compare input")
        edge = "return document.querySelector('.compare').style.getPropertyValue('--edge')"
        self.assertEqual(self.script(edge), "50%")
        slider.send_keys(Keys.ARROW_RIGHT)
        self.assertEqual(self.script(edge), "51%")
        slider.send_keys(Keys.END)
        self.assertEqual(self.script(edge), "100%")
        outline = "return getComputedStyle(document.querySelector('.edge')).outlineStyle"
        self.assertEqual(self.script(outline), "solid")
        width = slider.size["width"]
        webdriver.ActionChains(self.browser).move_to_element_with_offset(slider, -width // 4, 0).click().perform()
        self.assertAlmostEqual(float(self.script(edge)[:-1]), 25, delta=2)

    def test_what_moves_stands_still_when_it_is_asked_to(self):
        # Pictures are loaded when they come into sight.
        current = """return new Promise(done => {
            const look = () => { const source = document.querySelector('.moving img').currentSrc; source ? done(source) : setTimeout(look, 50); };
            look(); })"""
        self.show(1000)
        self.open("effects/clock.html")
        self.assertTrue(self.script(current).endswith("clock-moving.webp"))
        self.find(".stop").click()
        stopped = "return new Promise(done => setTimeout(() => done(document.querySelector('.moving img').currentSrc), 300))"
        self.assertTrue(self.script(stopped).endswith("clock-moving-still.webp"))
        self.show(1000, motion="reduce")
        self.open("effects/clock.html")
        self.assertTrue(self.script(current).endswith("clock-moving-still.webp"))

    def test_commands_can_be_copied_and_are_told_so(self):
        self.open("effects/invert.html")
        self.find(".command button").click()
        WebDriverWait(self.browser, 5).until(
            lambda _: self.find(".command button").text == "Copied")

    def test_describe_leads_to_the_page(self):
        for effect in ("invert", "simple_gauss_blur", "volume"):
            text = subprocess.run([PROGRAM, "describe", effect], capture_output=True, text=True, check=True).stdout
            page = pathlib.Path(re.search(r"file://(\S+)\n$", text)[1])
            self.assertIn(page, PAGES)
            self.assertIn(f"<code>{text.split()[0]}</code>", page.read_text())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
