"""The settings without a pointer and without eyes: by Tab, as the accessibility bus tells it."""

from desktop_case import DesktopCase, main
from velloro_tools.desktop import wait_for

WIDTH = 1280  # of the screen
TABS = ["General", "Model", "Dictionary", "History", "Privacy"]


def crop(screen, place, margin=3):
    """A part of the screen's pixels, with a margin for the ring around it."""
    x, y, width, height = place
    x, y = max(x - margin, 0), max(y - margin, 0)
    rows = range(y, y + height + 2 * margin)
    return [screen[3 * (row * WIDTH + x):3 * (row * WIDTH + x + width + 2 * margin)]
            for row in rows]


class KeyboardTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.velloro.set_up()
        self.velloro.start()
        self.open_panel()

    def open_panel(self):
        self.desktop.run([self.velloro.process.args[0]])
        self.user.wait_for_focus(lambda focus: focus["application"] == "Velloro", "the panel")

    def focused(self):
        return next((one for one in self.user.controls() if one["focused"]), None)

    def screen(self):
        return self.user.pixels(0, 0, WIDTH, 800)

    def tab(self, screen=None):
        """Presses Tab, while the screen looks so; what has the keyboard then, once that can be
        seen, and how the screen looks."""
        before, screen = self.focused(), screen or self.screen()
        self.user.keys("tap", "Tab")
        after = wait_for(lambda: (now := self.focused()) and now != before and now,
                         f"the control after {before}")
        if before | {"focused": False} not in self.user.controls():
            return after, None  # all was scrolled, and looks different anyway
        return after, wait_for(
            lambda: crop(now := self.screen(), after["place"]) != crop(screen, after["place"])
            and now, f"a sign of the keyboard at {after}", timeout=5)

    def walk(self):
        """Presses Tab until it comes around; roles and names, in this order. The arrow keys lead
        to the other tabs and choices."""
        def identity(one):
            return one["role"], one["name"], one["within"]

        seen = {identity(one) for one in self.user.controls()
                if one["role"] in ("push button", "check box", "combo box", "text")}
        self.assertNotIn("", {one["name"] for one in self.user.controls()})
        first, screen = self.focused(), None
        reached = [first]
        for _ in range(40):
            one, screen = self.tab(screen)
            if identity(one) == identity(first):
                break
            reached.append(one)
        self.assertEqual(identity(one), identity(first), "Tab comes around")
        self.assertLessEqual(seen, {identity(one) for one in reached})
        # A name tells the present value after its colon.
        return [(one["role"], one["name"].partition(":")[0]) for one in reached]

    def open_settings(self):
        for _ in range(10):
            if self.focused()["name"] == "Settings...":
                break
            self.tab()
        self.user.keys("tap", "Return")
        self.wait_for_control("page tab")
        icon = self.desktop.run(["xprop", "-name", "Velloro Settings", "_NET_WM_ICON"])
        self.assertIn("Icon (128 x 128)", icon)

    def open_pane(self, name):
        while self.focused()["role"] != "page tab":
            self.tab()
        for tab in TABS[TABS.index(self.focused()["name"]) + 1:TABS.index(name) + 1]:
            self.user.keys("tap", "Right")
            wait_for(lambda tab=tab: self.focused()["name"] == tab, f"the tab {tab}")

    def wait_for_control(self, role, name=""):
        """The control with the keyboard, once it is of this role and its name begins so."""
        return wait_for(lambda: (one := self.focused()) and one["role"] == role
                        and one["name"].startswith(name) and one, f"the {role} {name}")

    def go_to_the_languages(self):
        """The place of their button."""
        while not self.focused()["name"].startswith("Transcription Language"):
            self.tab()
        return self.focused()["place"]

    def wait_for_language(self, *others):
        return wait_for(lambda: (now := self.velloro.settings().get("selectedLanguage"))
                        not in (None, *others) and now, "another language")

    def click_on(self, place):
        self.user.click(place[0] + place[2] // 2, place[1] + place[3] // 2)

    def test_a_list_that_was_open_is_followed_by_whatever_the_user_does(self):
        def closed():
            return not self.user.windows("Velloro Settings")

        # What listens for the focus, as a screen reader does, makes the toolkit tell of the list.
        self.open_settings()
        self.go_to_the_languages()
        self.user.keys("tap", "Return")
        self.wait_for_control("menu item", "English")
        self.user.keys("tap", "Down", "tap", "Return")
        first = self.wait_for_language("en")
        self.wait_for_control("push button", "Transcription Language")
        self.user.keys("tap", "Control_L", "Tab")
        self.wait_for_control("page tab", "Model")

        self.user.keys("tap", "Control_L", "Shift_L", "Tab")
        self.wait_for_control("page tab", "General")
        self.click_on(self.go_to_the_languages())
        self.wait_for_control("menu item")
        entries = [one for one in self.user.controls() if one["role"] == "menu item"]
        self.click_on(entries[3]["place"])
        self.wait_for_language(first)
        self.user.keys("tap", "Control_L", "w")
        wait_for(closed, "the settings' end")

        self.open_panel()
        self.open_settings()
        self.go_to_the_languages()
        self.user.keys("tap", "space")
        self.wait_for_control("menu item")
        self.user.keys("tap", "Escape")
        self.wait_for_control("push button", "Transcription Language")
        self.user.keys("tap", "Escape")
        wait_for(closed, "the settings' end")

        self.open_panel()
        self.open_settings()
        self.go_to_the_languages()
        self.user.keys("tap", "Down")
        self.wait_for_control("menu item")
        self.assertEqual(self.velloro.stop(), 0)

    def test_the_settings(self):
        self.open_settings()
        tabs = [one["name"] for one in self.user.controls() if one["role"] == "page tab"]
        self.assertEqual(tabs, TABS)
        self.assertEqual(self.walk(), [
            ("page tab", "General"),
            ("push button", "Hotkey"),
            ("radio button", "Hold to Talk"),
            ("push button", "Transcription Language"),
            ("check box", "Play sounds"),
            ("check box", "Insert as plain text"),
            ("check box", "Launch at login"),
            ("check box", "Require text field focus"),
            ("check box", "Realtime streaming (Experimental)"),
            ("check box", "Text correction (Experimental)")])

        self.open_pane("Model")
        self.user.keys(*["tap", "Tab"] * 6)
        wait_for(lambda: self.focused()["name"] == "Base", "the group of base models")
        self.user.keys("tap", "space")
        group, *rest = self.walk()
        self.assertEqual(group, ("push button", "Base"))
        self.assertEqual(rest, [
            *[("push button", "Download")] * 4,
            *[("push button", name) for name in ("Small", "Medium", "Large V2", "Large V3",
                                                 "Large V3 Turbo")],
            ("page tab", "Model"),
            *[("push button", f"Model of {name}") for name in ("Small", "Medium", "Large")],
            ("radio button", "Quantized (Smaller)"),
            ("push button", "Tiny")])

        self.open_pane("Privacy")
        self.assertEqual(self.walk(), [("page tab", "Privacy"),
                                       ("push button", "Clear Transcription History")])


if __name__ == "__main__":
    main()
