#!/usr/bin/python3
"""Takes the documentation's picture of the studio: studio_picture.py AVEFFECT CLIP PNG"""
import subprocess
import sys

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import Select, WebDriverWait

program, clip, picture = sys.argv[1:]
studio = subprocess.Popen([program, "studio", clip, "--no-browser"], stdout=subprocess.PIPE, text=True)
options = webdriver.ChromeOptions()
for word in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage"):
    options.add_argument(word)
browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
try:
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {"width": 1280, "height": 720, "deviceScaleFactor": 1, "mobile": False})
    browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": "dark"}]})
    browser.get(studio.stdout.readline().strip())
    wait = WebDriverWait(browser, 30)
    wait.until(lambda _: browser.execute_script("return document.documentElement.dataset.ready"))
    for effect in ("brightness-contrast", "spherize"):
        browser.find_element(By.CSS_SELECTOR, f"[data-effect={effect}]").click()
    browser.execute_script("const b = document.getElementById('bar'); b.value = 2; b.dispatchEvent(new Event('input'))")
    browser.find_element(By.CSS_SELECTOR, "[data-property=spherize_scale] .key").click()
    Select(browser.find_element(By.ID, "compare")).select_by_value("wipe")
    wait.until(lambda _: browser.execute_script("return document.querySelector('canvas.after').dataset.exact"))
    wait.until(lambda _: browser.execute_script("return document.querySelectorAll('.effect img').length > 8 && document.querySelectorAll('.preset img').length > 2"))
    browser.save_screenshot(picture)
finally:
    browser.quit()
    studio.terminate()
    studio.wait()
