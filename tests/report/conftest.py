"""Pages of "kolum library report" in a real Chromium without a window. KOLUM names the program."""

import json
import os
import pathlib
import subprocess

import pytest
from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

KOLUM = os.environ["KOLUM"]


class Library:
    """A library of invented files in a folder of its own."""

    def __init__(self, folder):
        self.folder = folder
        self.file = folder / "library.db"
        self._lines = []

    def add(self, name, **document):
        """A file that exists, with its document; "error" in it makes it a failure."""
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.touch()
        self._lines.append(json.dumps({"schema": 2, "file": str(path), **document}))

    def report(self, name="report.html"):
        """The page, as a path."""
        page = self.folder / name
        lines = "".join(line + "\n" for line in self._lines)
        self._lines.clear()
        for arguments, given in ((["add"], lines), (["report", str(page)], "")):
            subprocess.run(
                [KOLUM, "library", *arguments, "--library", str(self.file)],
                input=given, text=True, check=True, stdout=subprocess.DEVNULL)
        return page


class Browser:
    """A Chromium; every test looks at its console."""

    def __init__(self, folder, *arguments):
        options = webdriver.ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                         "--window-size=1400,1000", f"--user-data-dir={folder}", *arguments):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        service = webdriver.chrome.service.Service("/usr/bin/chromedriver")
        self.driver = webdriver.Chrome(service=service, options=options)
        self.driver.set_script_timeout(120)

    def open(self, page):
        self.driver.get(pathlib.Path(page).absolute().as_uri())
        WebDriverWait(self.driver, 120).until(lambda driver: self.state() != "loading")
        assert self.state() == "ready", self.find("#message").text

    def state(self):
        return self.run("return document.documentElement.dataset.state")

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def find(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def texts(self, selector):
        return [element.text for element in self.driver.find_elements(By.CSS_SELECTOR, selector)]

    def console(self):
        return self.driver.get_log("browser")

    def requests(self):
        """What was asked for, beyond the page itself and what is in it."""
        asked = []
        for entry in self.driver.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                asked.append(message["params"]["request"]["url"])
        return [url for url in asked if not url.startswith(("file:", "data:", "blob:", "chrome:"))]

    def bars(self, canvas):
        """The labels of a chart and their values."""
        return dict(self.run(
            "const {labels, datasets} = Chart.getChart(arguments[0]).data;"
            "return labels.map((label, i) => [label, datasets[0].data[i]]);", canvas))

    def info(self):
        return self.find(".dataTables_info").text

    def search(self, text):
        box = self.find(".dataTables_filter input")
        box.send_keys(Keys.CONTROL + "a")
        box.send_keys(Keys.BACKSPACE + text)

    def wait(self, condition):
        WebDriverWait(self.driver, 30).until(lambda driver: condition())


@pytest.fixture(scope="session")
def browser(tmp_path_factory):
    started = Browser(tmp_path_factory.mktemp("profile"))
    yield started
    started.driver.quit()


@pytest.fixture
def library(tmp_path):
    return Library(tmp_path)
