"""Into applications that people write in all day; what they wrote before stays."""

import re
import urllib.parse

from desktop_case import JFK, DesktopCase, main
from streaming_case import StreamingCase
from velloro_tools.desktop import wait_for

# Short enough for a title that has the dictated words as well.
MINE = "My letter, word by word. "

# Three kinds of fields; the title tells which was written into last, and what is in it.
PAGE = """<!DOCTYPE html><meta charset="utf-8"><title>Fields</title>
<textarea autofocus rows="4" cols="80">{mine}</textarea><input size="80" value="{mine}">
<div contenteditable style="white-space: pre-wrap">{mine}</div>
<script>
const fields = [...document.querySelectorAll("textarea, input, div")];
const content = field => field.value ?? field.textContent;
fields.forEach((field, number) => {{
    field.addEventListener("input", () => {{
        document.title = `field ${{number}} ${{encodeURIComponent(content(field))}} end`;
    }});
    field.addEventListener("focus", () => {{
        if (field.value === undefined)
            getSelection().selectAllChildren(field), getSelection().collapseToEnd();
        else
            field.setSelectionRange(field.value.length, field.value.length);
    }});
}});
fields[0].blur();
fields[0].focus();
</script>
"""
FIELDS = 3
PREFERENCES = {"browser.aboutwelcome.enabled": "false",
               "browser.shell.checkDefaultBrowser": "false",
               "browser.tabs.warnOnClose": "false",
               "datareporting.policy.dataSubmissionEnabled": "false"}


class Batch(DesktopCase):
    def launch(self):
        self.start_velloro()

    def speak(self):
        """One dictation; what is to stand in the application."""
        return self.dictate()


class Streaming(StreamingCase):
    def launch(self):
        self.start_streaming()

    def speak(self):
        mark = self.start_recording()
        self.user.speak(JFK)
        wait_for(lambda: self.counted(mark), "words typed", timeout=60)
        return self.end_recording(mark)


class Firefox:
    components = ("firefox-esr",)

    def open_page(self):
        profile = self.desktop.home / "profile"
        profile.mkdir()
        (profile / "user.js").write_text("".join(
            f'user_pref("{name}", {value});\n' for name, value in PREFERENCES.items()))
        page = self.desktop.home / "page.html"
        page.write_text(PAGE.format(mine=MINE))
        self.user.open(["firefox-esr", "--new-instance", "--profile", profile, page.as_uri()])
        self.user.wait_for_focus(lambda focus: focus["text"] == MINE, timeout=60)

    def written(self):
        """The field that was written into last, and what is in it."""
        for title in self.user.window_titles():
            if found := re.match("field (.) (.*) end", title):
                return int(found[1]), urllib.parse.unquote(found[2]).replace("\xa0", " ")
        return None

    def test_each_kind_of_field(self):
        self.launch()
        self.open_page()
        for field in range(FIELDS):
            expected = field, MINE + self.speak()
            wait_for(lambda expected=expected: self.written() == expected,
                     f"{expected} in the page's title", timeout=5)
            self.user.keys("tap", "Tab")


class Kate:
    components = ("kate",)

    def open_file(self):
        self.file = self.desktop.home / "letter.txt"
        self.file.write_text(MINE)
        self.user.open(["kate", "--startanon", self.file])
        self.user.keys("tap", "Control_L", "End")

    def saved(self):
        self.user.keys("tap", "Control_L", "s")
        return self.file.read_text().rstrip("\n")

    def check(self):
        expected = MINE + self.speak()
        wait_for(lambda: self.saved() == expected, f"{expected!r} in the file", timeout=10,
                 interval=0.5)

    def test_opened_before(self):
        self.open_file()
        self.launch()
        self.check()

    def test_opened_after(self):
        self.launch()
        self.open_file()
        self.check()


class FirefoxBatchTest(Firefox, Batch):
    pass


class FirefoxStreamingTest(Firefox, Streaming):
    pass


class KateBatchTest(Kate, Batch):
    pass


class KateStreamingTest(Kate, Streaming):
    pass


if __name__ == "__main__":
    main()
