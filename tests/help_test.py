"""The help document as it is installed, in a real browser and beside the program's own texts.
usage: help_test.py BUILD"""
import html
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).parent.parent
FINDINGS = """<script>onload = function () {
    function all(selector) { return Array.from(document.querySelectorAll(selector)); }
    function numbers(colour) { return colour.match(/[\\d.]+/g).map(Number); }
    function luminance(colour) {
        let [r, g, b] = numbers(colour).map(c => c / 255)
            .map(c => c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4);
        return 0.2126 * r + 0.7152 * g + 0.0722 * b;
    }
    function ground(element) {
        if (!element) return 'rgb(255, 255, 255)';
        let colour = getComputedStyle(element).backgroundColor;
        return numbers(colour)[3] === 0 ? ground(element.parentElement) : colour;
    }
    function contrast(element) {
        let [a, b] = [getComputedStyle(element).color, ground(element)].map(luminance);
        return (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
    }
    let texts = all('body *').filter(e => Array.from(e.childNodes)
        .some(n => n.nodeType === 3 && n.data.trim()));
    let found = {
        dark: matchMedia('(prefers-color-scheme: dark)').matches,
        width: innerWidth,
        needed: document.documentElement.scrollWidth,
        headings: all('h1, h2, h3, h4, h5, h6').map(h => Number(h.tagName[1])),
        pictures: all('img').length,
        badPictures: all('img').filter(i => !i.naturalWidth || !i.hasAttribute('alt'))
            .map(i => i.src),
        links: all('a[href]').map(a => a.getAttribute('href')),
        anchors: all('a[name]').map(a => '#' + a.name),
        texts: texts.length,
        pale: texts.filter(e => contrast(e) < 4.5).map(e => e.textContent.trim()),
    };
    document.body.textContent = JSON.stringify(found);
}</script>"""


def browse(folder, dark):
    """What a browser 800 pixels wide finds in the page of that folder."""
    page = (folder / "Quirkmeter.htm").read_text()
    (folder / "examined.htm").write_text(page.replace("</head>", FINDINGS + "</head>"))
    dom = subprocess.run(
        ["chromium", "--headless", "--disable-gpu", "--hide-scrollbars", "--window-size=800,600"]
        + ["--no-sandbox"] * (os.geteuid() == 0)
        + [f"--user-data-dir={folder}/browser", f"--blink-settings=preferredColorScheme={1 - dark}"]
        + ["--dump-dom", (folder / "examined.htm").as_uri()],
        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=100, check=True, text=True,
    ).stdout
    return json.loads(html.unescape(re.search("<body>(.*)</body>", dom, re.DOTALL)[1]))


def plain(text):
    return " ".join(html.unescape(re.sub("<[^>]*>", " ", text)).split())


def program_texts():
    """The literals of the sources, without access keys and escapes, the longest first."""
    texts = {"FS2002 Quirkmeter"}
    others = [ROOT / "rehearse/window.cpp", ROOT / "packaging/windows/installer.nsi"]
    for path in [*ROOT.glob("src/*/*.*"), *others]:
        source = re.sub(r'"\s*\n\s*"', "", path.read_text())
        for literal in re.findall(r'"((?:[^"\\\n]|\\.)*)"', source):
            texts.add(plain(re.sub(r"[&\\]", "", literal)))
    return sorted((text for text in texts if len(text) > 1), key=len, reverse=True)


class HelpTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        home = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        cls.addClassCleanup(home.cleanup)
        cls.folder = Path(home.name)
        command = ["cmake", "--install", BUILD, "--prefix", home.name]
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
        cls.page = (cls.folder / "Quirkmeter.htm").read_text()

    def test_in_a_browser(self):
        self.assertNotIn("://", self.page, "nothing is far away")
        for dark in (False, True):
            with self.subTest(dark=dark):
                found = browse(self.folder, dark)
                self.assertEqual((found["dark"], found["width"]), (dark, 800))
                self.assertLessEqual(found["needed"], 800)
                levels = found["headings"]
                self.assertEqual((levels[0], levels.count(1)), (1, 1))
                self.assertTrue(all(b <= a + 1 for a, b in zip(levels, levels[1:])), levels)
                self.assertGreater(found["pictures"], 10)
                self.assertEqual(found["badPictures"], [])
                self.assertGreater(found["texts"], 300)
                self.assertEqual(found["pale"], [])
                inside = {link for link in found["links"] if link.startswith("#")}
                self.assertEqual(inside - set(found["anchors"]), set())
                files = set(found["links"]) - inside
                self.assertEqual([f for f in files if not (self.folder / f).is_file()], [])

    def test_says_what_the_program_says(self):
        texts = program_texts()
        for quoted in re.findall(r"<(?:b|samp)>(.*?)</(?:b|samp)>", self.page, re.DOTALL):
            rest = plain(quoted)
            for text in texts:
                rest = rest.replace(text, "")
            self.assertRegex(rest, r"^[\W\d]*$", f"the program does not say: {plain(quoted)}")

    def test_tells_of_every_subsystem(self):
        source = (ROOT / "src/model/catalogue.cpp").read_text()
        names = re.findall(r'\{\d, \d+, "(.*?)"', source)
        self.assertEqual(len(names), 62)
        self.assertEqual(re.findall('<th scope="row">(.*?)</th>', self.page), names)


if __name__ == "__main__":
    BUILD = sys.argv.pop()
    unittest.main()
