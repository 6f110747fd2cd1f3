"""Before a recording: is there a field to type into?"""

from desktop_case import PHRASE_WORDS, DesktopCase, main


class FocusCheckTest(DesktopCase):
    def open_with_focus_on_a_button(self):
        self.user.open(["zenity", "--question", "--text", "Is this a text field?"])
        self.user.wait_for_focus(lambda focus: "button" in focus["role"], "a button with the focus")

    def test_a_button_is_refused_with_a_notification(self):
        self.user.watch_notifications()
        self.user.host_tray()  # one that is missing is told of, too
        self.start_velloro()
        self.open_with_focus_on_a_button()

        mark = self.velloro.mark()
        self.user.press()
        self.velloro.wait_for("[Dictation] Text field not focused, showing notification", mark)
        self.user.release()
        self.assertFalse(self.microphone_is_open())

        # A field is taken at once, so the refusal left nothing behind.
        self.user.open(["zenity", "--entry"])
        self.user.wait_for_focus()
        self.assert_words(self.dictate(), PHRASE_WORDS)
        recordings = [line for line in self.velloro.lines
                      if line.startswith("[AudioCapture] Started recording")]
        self.assertEqual(len(recordings), 1)
        self.assertEqual(
            [(one["summary"], one["body"], one["silent"]) for one in self.user.notifications()],
            [("Velloro", ("Please click on a text field before recording. "
                          "You can disable this check in Settings."), True)])

    def test_a_button_is_taken_when_the_check_is_off(self):
        self.user.watch_notifications()
        self.user.host_tray()  # one that is missing is told of, too
        self.start_velloro(requireTextFieldFocus=False)
        self.open_with_focus_on_a_button()
        self.assert_words(self.dictate(), PHRASE_WORDS)
        self.assertEqual(self.user.notifications(), [])


if __name__ == "__main__":
    main()
