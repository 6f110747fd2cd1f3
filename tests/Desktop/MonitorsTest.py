"""Where the pill and the panel are: on two monitors, on a scaled desktop, above everything, and out
of the window manager's lists."""

import re

from desktop_case import DesktopCase, main
from velloro_tools.desktop import DesktopError, wait_for

# Side by side, their upper edges level.
LEFT = (0, 0, 640, 800)
RIGHT = (640, 0, 640, 600)
SIZE = (260, 48)


class MonitorsTest(DesktopCase):
    components = ("xdotool", "xrandr", "trayer")

    def use_two_monitors(self):
        for name, (x, y, width, height), output in (("left", LEFT, "screen"),
                                                    ("right", RIGHT, "none")):
            self.desktop.run(["xrandr", "--setmonitor", name,
                              f"{width}/{width // 4}x{height}/{height // 4}+{x}+{y}", output])

    def pill(self, scale=1):
        """Where the pill is, or None."""
        size = tuple(round(length * scale) for length in SIZE)
        return next((place for place in self.user.windows("Velloro") if place[2:] == size), None)

    def show_pill(self):
        mark = self.velloro.mark()
        self.user.press()
        self.velloro.wait_for("[RecordingPill] Window shown", since=mark)
        return mark

    def hide_pill(self, mark):
        self.user.release()
        self.finish(mark)
        wait_for(lambda: not self.pill(), "the pill's end")

    def assert_pill_above(self, pointer, monitor, scale):
        self.user.move(*pointer)
        mark = self.show_pill()
        # Centred, its lower edge 50 above the pointer, 10 inside the monitor: all of it scaled.
        width, height = (length * scale for length in SIZE)
        x, y = pointer[0] - width / 2, pointer[1] - 50 * scale - height
        x = max(min(x, monitor[0] + monitor[2] - width - 10 * scale), monitor[0] + 10 * scale)
        y = min(max(y, monitor[1] + 10 * scale), monitor[1] + monitor[3] - height - 10 * scale)
        last = None

        def is_there():
            nonlocal last
            last = self.pill(scale)
            return last and abs(last[0] - x) <= scale and abs(last[1] - y) <= scale
        try:
            wait_for(is_there, "the pill", timeout=5)
        except DesktopError:
            self.fail(f"the pill is at {last}, not at {x}, {y}, for the pointer at {pointer} on "
                      f"the monitor {monitor}, {scale} ×")
        self.hide_pill(mark)

    def test_the_pill_on_two_monitors(self):
        self.use_two_monitors()
        for scale in (1, 1.5):
            self.desktop.environment["QT_SCALE_FACTOR"] = str(scale)
            self.start_velloro(requireTextFieldFocus=False)
            for pointer, monitor in (((300, 500), LEFT), ((0, 0), LEFT), ((639, 799), LEFT),
                                     ((640, 400), RIGHT), ((1279, 599), RIGHT)):
                self.assert_pill_above(pointer, monitor, scale)
            # A panel at the upper edge of the left monitor alone.
            panel = self.desktop.start(
                ["trayer", "--edge", "top", "--align", "left", "--widthtype", "pixel", "--width",
                 "300", "--heighttype", "pixel", "--height", "40", "--SetDockType", "true",
                 "--SetPartialStrut", "true"], log="trayer")
            wait_for(lambda: self.user.windows("panel"), "the panel")
            self.assert_pill_above((0, 0), (0, 40, 640, 760), scale)
            self.assert_pill_above((700, 0), RIGHT, scale)
            panel.terminate()
            panel.wait()
            self.velloro.stop()

    def test_the_panel_is_on_the_monitor_of_the_pointer(self):
        self.use_two_monitors()
        self.start_velloro()
        for pointer, monitor in (((900, 300), RIGHT), ((100, 700), LEFT)):
            self.user.move(*pointer)
            self.desktop.run([self.velloro.process.args[0]])
            x, y, width, height = wait_for(
                lambda: next((one for one in self.user.windows("Velloro") if one[2] == 280), None),
                "the panel")
            self.assertGreaterEqual(x, monitor[0])
            self.assertLessEqual(x + width, monitor[0] + monitor[2])
            self.assertLessEqual(y + height, monitor[3])
            self.user.wait_for_focus(lambda focus: focus["application"] == "Velloro", "the panel")
            self.user.keys("tap", "Escape")
            wait_for(lambda: not self.user.windows("Velloro"), "the panel's end")

    def test_the_pill_is_above_all_on_every_desktop_and_no_window_of_the_manager(self):
        self.start_velloro(requireTextFieldFocus=False)
        self.desktop.run(["xdotool", "set_num_desktops", "2"])
        self.user.open(["xterm", "-fullscreen"])
        self.user.move(600, 400)
        active = self.user.active_window()
        middle = 600, 326  # of the pill; between its words and its clock
        before = self.user.pixels(*middle, 4, 4)

        mark = self.show_pill()
        wait_for(lambda: self.user.pixels(*middle, 4, 4) != before, "the pill above the window")
        self.assertEqual(self.user.active_window(), active)
        numbers = re.findall('(0x\\w+) "Velloro"', self.desktop.run(["xwininfo", "-root", "-tree"]))
        listed = self.desktop.run(["xprop", "-root", "_NET_CLIENT_LIST_STACKING"])
        self.assertTrue(numbers)
        self.assertFalse([number for number in numbers if number in listed])
        # A click on it changes nothing.
        self.user.click(*middle)
        self.assertEqual(self.user.active_window(), active)

        self.desktop.run(["xdotool", "set_desktop", "1"])
        wait_for(lambda: self.user.active_window() != active, "the other desktop")
        self.assertTrue(self.pill())
        self.assertNotEqual(self.user.pixels(*middle, 4, 4), before)
        self.hide_pill(mark)


if __name__ == "__main__":
    main()
