"""The pill on a compositor: where it is, how sharp it is, and that it takes neither focus nor
clicks."""

from desktop_case import DesktopCase, main
from velloro_tools.desktop import wait_for
from velloro_tools.desktop.picture import difference
from wayland_case import ListeningWindow, OnSway

SIZE = (260, 48)
# How far above the output's lower edge it may be.
NEAR = 120


class WaylandPillTest(OnSway, DesktopCase):
    components = ["grim"]

    def setUp(self):
        super().setUp()
        self.left = (0, 0, 1280, 800)
        self.right = (1280, 0, 1000, 700)
        self.other = self.desktop.add_output(self.right)

    def look(self, place):
        """What is seen there."""
        return self.user.pixels(*place)

    def pill_in(self, place, before, scale):
        """Where the picture differs (x, y, width, height, in pixels of the picture), once it has
        something of the pill's width."""
        def found():
            area = difference(before, self.look(place))
            return area if area and area[2] >= SIZE[0] * scale - 2 * scale else None
        return wait_for(found, "the pill in the picture", timeout=5)

    def check_pill(self, name, focused, others, scale=1):
        self.desktop.message(f"focus output {name}")
        window = ListeningWindow(self.user)
        pictures = {place: self.look(place) for place in (focused, *others)}
        active = self.user.active_window()
        focus = len(window.events("focus"))

        mark = self.start_recording()
        x, y, width, height = self.pill_in(focused, pictures[focused], scale)
        # Its shadow and its corners may be as faint as the ground.
        self.assertAlmostEqual(width, SIZE[0] * scale, delta=8 * scale)
        self.assertAlmostEqual(height, SIZE[1] * scale, delta=8 * scale)
        self.assertAlmostEqual(x + width / 2, focused[2] * scale / 2, delta=2 * scale)
        self.assertLess(focused[3] * scale - (y + height), NEAR * scale)
        for place in others:
            self.assertIsNone(difference(pictures[place], self.look(place)))

        self.user.click(round(focused[0] + (x + width / 2) / scale),
                        round(focused[1] + (y + height / 2) / scale))
        window.wait_for("click")
        self.assertEqual(self.user.active_window(), active)
        self.assertEqual(len(window.events("focus")), focus)
        self.assertFalse(window.events("blur"))
        self.end_recording(mark)
        wait_for(lambda: not difference(pictures[focused], self.look(focused)), "the pill's end")
        window.process.terminate()
        window.process.wait()

    def test_it_is_at_the_bottom_of_the_output_with_the_focus(self):
        self.start_velloro(requireTextFieldFocus=False)
        self.user.move(5, 5)
        self.check_pill("HEADLESS-1", self.left, [self.right])
        self.check_pill(self.other, self.right, [self.left])

    def test_it_is_as_sharp_as_the_output(self):
        self.desktop.message(f"output {self.other} disable")
        self.start_velloro(requireTextFieldFocus=False)
        for scale in (1.25, 1.5, 2):
            with self.subTest(scale):
                self.desktop.message(f"output HEADLESS-1 scale {scale}")
                place = wait_for(
                    lambda scale=scale: (now := self.desktop.outputs()["HEADLESS-1"])[2]
                    == round(1280 / scale) and now, "the scale")
                self.check_pill("HEADLESS-1", place, [], scale)


if __name__ == "__main__":
    main()
