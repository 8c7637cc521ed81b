"""What people see of a report: numbers, texts, filters, speed."""

import subprocess
import time

import pytest
from conftest import KOLUM
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select

MANY = 100_000


def identifier(number, name):
    return {"id": number, "name": name}


VIDEO = {"kind": identifier(2, "video"), "containerFormat": identifier(12, "FORMAT_MKV"),
         "videoCodec": identifier(28, "CODEC_ID_H264"), "width": 1920, "height": 1080}
PHOTO = {"kind": identifier(3, "photo"), "mimeType": "image/jpeg", "width": 640, "height": 480}
SONG = {"kind": identifier(1, "music"), "containerFormat": identifier(1, "FORMAT_MP3"),
        "audioCodec": identifier(86017, "CODEC_ID_MP3"), "channels": 2, "dlnaProfile": "MP3"}


def mixed(library):
    library.add("film.mkv", **VIDEO, duration=3600, streams=[{"type": "video", "dynamicRange": ["HDR10"]}])
    library.add("clip.mkv", **VIDEO, duration=1800, streams=[{"type": "video"}])
    library.add("song.mp3", **SONG, duration=180, title="Tea for Two", fingerprint="f1")
    library.add("copy.mp3", **SONG, duration=180, title="Tea for Two", fingerprint="f1")
    library.add("a.jpg", **PHOTO, taken="2015-06-07T08:09:10Z", position={"latitude": 48.8584, "longitude": 2.2945})
    library.add("b.jpg", **PHOTO, taken="2015-06-30T08:09:10Z")
    library.add("c.jpg", **PHOTO, taken="2015-04-01T08:09:10Z")
    library.add("d.jpg", **PHOTO)
    library.add("broken.mp4", error={"code": "damaged", "reason": "the file is damaged"})


@pytest.fixture
def page(browser, library):
    mixed(library)
    browser.open(library.report())
    yield browser
    assert browser.console() == []
    assert browser.requests() == []


def test_charts_have_their_numbers(page):
    assert page.bars("chart-kind") == {"photo": 4, "music": 2, "video": 2, "unknown": 1}
    assert page.bars("chart-videoCodec") == {"H264": 2}
    assert page.bars("chart-audioCodec") == {"MP3": 2, "unknown": 2}
    assert page.bars("chart-container") == {"JPEG": 4, "MKV": 2, "MP3": 2, "unknown": 1}
    assert page.bars("chart-resolution") == {"1080p": 2}
    assert page.bars("chart-dynamicRange") == {"HDR10": 1, "SDR": 1}
    assert page.bars("chart-channels") == {"stereo": 2, "unknown": 2}
    assert page.bars("chart-months") == {"2015-04": 1, "2015-05": 0, "2015-06": 2}
    page.find("input[name=measure][value='3']").click()
    assert page.bars("chart-kind") == {"video": 1.5, "music": 0.1, "photo": 0, "unknown": 0}


def test_charts_are_painted(page):
    painted = page.run("""
        return [...document.querySelectorAll('canvas')].map(canvas => {
          const {data} = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
          return new Set(new Uint32Array(data.buffer)).size;
        });""")
    assert len(painted) == 9
    assert all(colours > 10 for colours in painted)


def test_sections_have_their_tables(page):
    assert page.texts("#televisions tbody tr") == [
        "files in MKV have no DLNA names, whatever is in them - 2 0 bytes " + page.texts("#televisions tbody td")[4]]
    assert "2 videos and songs without a DLNA name" in page.find("#televisions-text").text
    assert page.find("#duplicates-text").text.startswith("2 files have a fingerprint")
    assert "copy.mp3" in page.find("#duplicates tbody td").text
    assert page.texts("#problems tbody td") == [
        "the file is damaged", "damaged", "failed", "when it changes, or with --retry", "1"]
    assert page.texts("#places tbody td") == ["48.9, 2.3", "48.9", "2.3", "1"]
    assert "DataTables" in page.find("footer").get_attribute("textContent")
    assert "Permission is hereby granted" in page.find("footer").get_attribute("textContent")


def test_search_and_filters_find_files(page):
    assert page.info() == "1 to 9 of 9 files"
    page.search("tea two")
    page.wait(lambda: page.info() == "1 to 2 of 2 files (of 9)")
    page.search("")
    page.wait(lambda: page.info() == "1 to 9 of 9 files")
    kind = Select(page.find("select[data-filter=kind]"))
    kind.select_by_visible_text("video")
    assert page.info() == "1 to 2 of 2 files (of 9)"
    assert page.texts("#table tbody td:first-child") == ["clip.mkv", "film.mkv"]
    kind.select_by_visible_text("all")
    page.find("#problems button").click()
    assert page.texts("#table tbody td:first-child") == ["broken.mp4"]
    page.find("#chosen-clear").click()
    assert page.info() == "1 to 9 of 9 files"


def test_rows_of_the_small_tables_choose_files(page):
    for selector, files in (("#televisions button", 2), ("#duplicates button", 2), ("#places button", 1)):
        page.find(selector).click()
        assert page.info() == f"1 to {files} of {files} files (of 9)"
        page.find("#chosen-clear").click()


def test_works_by_keyboard(page):
    heading = page.find(".dataTables_scrollHead th:nth-child(4)")
    heading.send_keys(Keys.ENTER)
    heading.send_keys(Keys.ENTER)
    assert page.texts("#table tbody td:first-child")[0] == "film.mkv"
    page.run("document.querySelector('.skip').focus();")
    reached = set()
    for _ in range(80):
        page.driver.switch_to.active_element.send_keys(Keys.TAB)
        reached.add(page.run("return document.activeElement.tagName"))
    assert {"A", "INPUT", "SELECT", "BUTTON", "SUMMARY", "TH", "DIV"} <= reached


def test_has_a_dark_mode_and_a_form_for_paper(page):
    light = page.run("return getComputedStyle(document.body).backgroundColor")
    axis = "return Chart.getChart('chart-kind').options.scales.x.ticks.color"
    light_axis = page.run(axis)
    page.driver.execute_cdp_cmd(
        "Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": "dark"}]})
    assert page.run("return getComputedStyle(document.body).backgroundColor") != light
    assert page.run(axis) != light_axis
    page.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": "print", "features": []})
    assert not page.find(".dataTables_wrapper").is_displayed()
    assert page.find("#chart-kind").is_displayed()
    # Paper is laid out before charts can be drawn anew.
    assert page.run("return getComputedStyle(document.getElementById('chart-kind')).maxWidth") == "100%"
    page.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": "", "features": []})


HOSTILE = [
    "<script>window.broken = 1</script>", "</script><script>window.broken = 1</script>",
    "<img src=x onerror='window.broken = 1'>", "&lt;b&gt;&amp;", "<!-- <script>", "a\u202egpj.exe", "\u2066\u200b\ufeff",
    "'\"`${window.broken = 1}", "\u2028line\u2029", "\x1b[31m\x00\x7f\x85",
]


def test_hostile_texts_are_texts(browser, library):
    for i, text in enumerate(HOSTILE):
        library.add(f"{i}.mkv", **{**VIDEO, "containerFormat": identifier(1, text)}, title=text,
                    artist=text, fingerprint=text.split("\x00")[0])
        library.add(f"{i}.jpg", **PHOTO, title=text, address={"city": text},
                    position={"latitude": i, "longitude": i})
        library.add(f"{i}.mp4", error={"code": text, "reason": text})
        library.add(text.replace("/", "_").replace("\x00", "") + ".mkv", **VIDEO, fingerprint=text)
    browser.open(library.report("<script>alert(1)<script>.html"))
    assert browser.run("return typeof window.broken") == "undefined"
    assert browser.run("return document.querySelectorAll('main script, main img, main b').length") == len(
        browser.texts(".totals b"))
    shown = browser.run("return document.querySelector('main').textContent")
    assert "<script>window.broken = 1</script>" in shown
    assert "&lt;b&gt;&amp;" in shown
    assert not set(shown) & set("\u202e\u2066\u200b\ufeff\u2028\u2029\x1b\x00\x7f\x85")
    assert "a\\u202egpj.exe" in shown
    browser.search("<script>window.broken")
    browser.wait(lambda: "(of" in browser.info())
    assert "<script>window.broken = 1</script>" in browser.texts("#table td")
    assert browser.run("return typeof window.broken") == "undefined"
    assert browser.console() == []
    assert browser.requests() == []


def test_an_empty_library_has_a_page(browser, library):
    library.add("a.jpg", **PHOTO)
    library.report()
    subprocess.run([KOLUM, "library", "forget", library.folder, "--library", library.file], check=True,
                   stdout=subprocess.DEVNULL)
    browser.open(library.report())
    assert "The library has no files." in browser.find("#table").text
    assert browser.console() == []


def test_a_hundred_thousand_rows_stay_quick(browser, library):
    for i in range(MANY):
        library.add(f"{i // 1000}/{i:06}.mp3", **SONG, duration=i % 600, title=f"Title {i * 7919 % MANY}",
                    artist=f"Artist {i % 977}", album="Album")
    page = library.report()
    assert page.stat().st_size < 10_000_000
    started = time.monotonic()
    browser.open(page)
    opened = time.monotonic() - started
    assert browser.info().endswith("of 100,000 files")
    assert browser.bars("chart-kind") == {"music": MANY}
    rows = "return document.querySelectorAll('#table tbody tr').length"
    assert browser.run(rows) < 500

    body = ".dataTables_scrollBody"
    browser.run(f"document.querySelector('{body}').scrollTop = 1e9")
    browser.wait(lambda: "to 100,000 of 100,000" in browser.info())
    assert "099999.mp3" in browser.texts("#table tbody td:first-child")
    browser.run(f"document.querySelector('{body}').scrollTop /= 2")
    browser.wait(lambda: "to 100,000 of" not in browser.info())
    assert browser.run(rows) < 500
    browser.find(body).send_keys(Keys.HOME)
    browser.wait(lambda: browser.info().startswith("1 to"))

    started = time.monotonic()
    browser.search("title 4242")
    browser.wait(lambda: "(of 100,000)" in browser.info())
    searched = time.monotonic() - started
    started = time.monotonic()
    browser.find(".dataTables_scrollHead th:nth-child(4)").click()
    sorted_after = time.monotonic() - started
    print(f"opened {opened:.1f} s, searched {searched:.1f} s, sorted {sorted_after:.1f} s")
    assert opened < 30 and searched < 20 and sorted_after < 20
    assert browser.console() == []
