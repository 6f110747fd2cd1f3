"""The program's permanent presence: its icon in either kind of tray, the panel that the icon opens,
and what there is without any tray."""

import signal
import time

from desktop_case import DesktopCase, main
from velloro_tools.desktop import wait_for

SCREEN = (0, 0, 1280, 800)
PANEL_WIDTH = 280


def is_inside(place, frame):
    x, y, width, height = place
    return (x >= frame[0] and y >= frame[1] and x + width <= frame[0] + frame[2]
            and y + height <= frame[1] + frame[3])


class TrayTest(DesktopCase):
    components = ["xdotool", "trayer"]

    def panel(self):
        """Where the panel is, or None."""
        return next((place for place in self.user.windows("Velloro") if place[2] == PANEL_WIDTH),
                    None)

    def wait_for_panel(self):
        """Its place once it has come to rest and has the keyboard."""
        self.user.wait_for_focus(lambda focus: focus["application"].lower() == "velloro",
                                 "the panel's focus")
        return wait_for(self.panel, "the panel")

    def wait_for_no_panel(self):
        wait_for(lambda: not self.panel(), "the panel's end")

    def tab_to(self, name):
        for _ in range(12):
            focus = self.user.focus()
            if focus and focus["name"] == name:
                return
            self.user.keys("tap", "Tab")
        self.fail(f"Tab never comes to {name!r}")

    def start_with_tray(self, *place):
        """With a tray of the X server; the place of the icon in it."""
        tray = self.desktop.start(["trayer", *place, "--widthtype", "request", "--height", "24",
                                   "--expand", "false"], log="trayer")
        self.start_velloro()
        icon = wait_for(lambda: next(
            (one for one in self.user.windows("Velloro") if one[2] == one[3] > 10), None),
            "the icon")
        return tray, icon

    def test_a_click_on_the_icon_opens_and_closes_the_panel_beside_it(self):
        for place in (["--edge", "bottom", "--align", "right"],
                      ["--edge", "top", "--align", "left"]):
            with self.subTest(place):
                tray, icon = self.start_with_tray(*place)
                middle = icon[0] + icon[2] // 2, icon[1] + icon[3] // 2
                self.user.click(*middle)
                x, y, width, height = panel = self.wait_for_panel()
                self.assertTrue(is_inside(panel, SCREEN), panel)
                # As near to the icon as the screen allows, and not over the tray.
                self.assertLessEqual(abs(x + width / 2 - middle[0]), width / 2 + 8)
                gap = icon[1] - (y + height) if y < icon[1] else y - (icon[1] + icon[3])
                self.assertIn(gap, range(1, 13), (panel, icon))

                self.user.click(*middle)
                self.wait_for_no_panel()
                self.user.click(*middle)
                self.wait_for_panel()
                self.user.keys("tap", "Escape")
                self.wait_for_no_panel()
                self.user.click(*middle)
                self.wait_for_panel()
                self.user.open(["zenity", "--entry"])
                self.wait_for_no_panel()
                self.velloro.stop()
                tray.terminate()
                tray.wait()

    def test_the_panel_opens_the_settings_and_quits(self):
        _, icon = self.start_with_tray("--edge", "bottom", "--align", "right")
        self.user.click(icon[0] + 5, icon[1] + 5)
        self.wait_for_panel()
        self.tab_to("Settings...")
        self.user.keys("tap", "Return")
        wait_for(lambda: self.user.windows("Velloro Settings"), "the settings")
        self.wait_for_no_panel()

        self.user.click(icon[0] + 5, icon[1] + 5)
        self.wait_for_panel()
        self.tab_to("Quit")
        self.user.keys("tap", "space")
        self.assertEqual(self.velloro.wait_for_end(), 0)

    def test_the_icon_in_the_tray_of_the_x_server_follows_the_states(self):
        _, icon = self.start_with_tray("--edge", "top", "--align", "left")
        self.user.open(["zenity", "--entry"])
        self.user.wait_for_focus()
        idle = self.user.pixels(*icon)
        mark = self.start_recording()
        wait_for(lambda: self.user.pixels(*icon) != idle, "the icon's change")
        self.end_recording(mark)
        wait_for(lambda: self.user.pixels(*icon) == idle, "the icon's return")

    def test_an_item_of_a_desktop_tray(self):
        host = self.user.host_tray()
        self.start_velloro()
        self.user.open(["zenity", "--entry"])
        self.user.wait_for_focus()
        wait_for(self.user.tray_item, "the item")
        self.dictate()
        ready = "Velloro: Ready"
        wait_for(lambda: len(self.user.tray_item()) > 3
                 and self.user.tray_item()[-1]["tooltip"] == ready, "the item's return")
        shown = self.user.tray_item()
        self.assertEqual({(one["title"], one["status"]) for one in shown}, {("Velloro", "Active")})
        icons = {}
        for one in shown:
            icons.setdefault(one["tooltip"], []).append(one["icon"])
        # Between the changes of icon and tooltip, the one may be seen with the other's last.
        settled = {tooltip: seen[-1] for tooltip, seen in icons.items()}
        # The insertion may be over before the tray has asked.
        settled.pop("Velloro: Inserting...", None)
        self.assertEqual(list(settled),
                         [ready, "Velloro: Listening...", "Velloro: Transcribing..."])
        self.assertEqual(len(set(settled.values())), 3)
        self.assertEqual(shown[-1]["icon"], shown[0]["icon"])

        # A click is told by the tray, while the pointer is still on the icon.
        for x, y in ((20, 790), (1275, 5)):
            self.user.move(x, y)
            self.activate(x, y)
            panel = self.wait_for_panel()
            self.assertTrue(is_inside(panel, SCREEN), panel)
            self.assertLess(min(abs(panel[1] - y), abs(panel[1] + panel[3] - y)), 25)
            self.assertLess(abs(panel[0] + panel[2] / 2 - x), PANEL_WIDTH / 2 + 25)
            self.user.keys("tap", "Escape")
            self.wait_for_no_panel()

        # The tray starts anew, as when the desktop's panel crashes.
        host.send_signal(signal.SIGKILL)
        host.wait()
        before = len(self.user.tray_item())
        self.user.host_tray()
        wait_for(lambda: len(self.user.tray_item()) > before, "the item's return")

    def test_a_tray_that_comes_late_or_does_not_answer_holds_nothing_up(self):
        for is_hung in (False, True):
            with self.subTest(is_hung=is_hung):
                if is_hung:
                    host = self.user.host_tray()
                    host.send_signal(signal.SIGSTOP)
                started = time.monotonic()
                self.start_velloro()
                # The toolkit alone would wait for 25 seconds.
                self.assertLess(time.monotonic() - started, 20)
                if is_hung:
                    host.send_signal(signal.SIGCONT)
                else:
                    host = self.user.host_tray()
                wait_for(self.user.tray_item, "the item")
                self.velloro.stop()
                host.kill()
                host.wait()

    def activate(self, x, y):
        item = self.user.tray_item()[-1]["item"]
        self.desktop.run(["gdbus", "call", "--session", "--dest", item,
                          "--object-path", "/StatusNotifierItem",
                          "--method", "org.kde.StatusNotifierItem.Activate", str(x), str(y)])

    def test_without_a_tray_a_second_start_opens_the_panel(self):
        self.user.watch_notifications()
        self.start_velloro()
        wait_for(self.user.notifications, "the notification")
        for _ in range(2):
            second = self.desktop.start([self.velloro.process.args[0]], log="second")
            self.assertEqual(second.wait(10), 0)
            self.assertTrue(is_inside(self.wait_for_panel(), SCREEN))
            self.user.keys("tap", "Escape")
            self.wait_for_no_panel()
        self.assertEqual(
            [(one["summary"], one["body"]) for one in self.user.notifications()],
            [("Velloro is running", "This desktop has no tray for its icon. "
              "Start Velloro again to open its panel.")])


if __name__ == "__main__":
    main()
