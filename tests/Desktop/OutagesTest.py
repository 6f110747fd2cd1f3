"""What Velloro depends on goes away, and comes back."""

import signal
import time

from desktop_case import PHRASE_WORDS, DesktopCase, main
from velloro_tools.desktop import wait_for


class OutagesTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.start_velloro()

    def open_entry(self):
        application = self.user.open(["zenity", "--entry"])
        self.user.wait_for_focus()
        return application

    def dictate_while(self, outage):
        """Speaks the phrase, lets the outage happen while the hotkey is still held, and returns
        what was heard until then."""
        mark = self.start_recording()
        self.user.speak(self.phrase())
        outage()
        return self.end_recording(mark)

    def test_the_microphone_is_taken_away(self):
        def unplug():
            self.desktop.run(["pactl", "unload-module", "module-remap-source"])

        self.open_entry()
        final = self.dictate_while(unplug)
        self.assert_words(final, PHRASE_WORDS)
        self.user.wait_for_text(final)

        self.desktop.run(["pactl", "load-module", "module-remap-source",
                          "source_name=microphone", "master=voice.monitor"])
        self.desktop.run(["pactl", "set-default-source", "microphone"])
        self.assert_words(self.dictate(), PHRASE_WORDS)

    def test_the_sound_server_restarts(self):
        def restart():
            self.desktop.stop_service("sound", signal.SIGKILL)
            self.desktop.start_sound()

        self.open_entry()
        final = self.dictate_while(restart)
        self.assert_words(final, PHRASE_WORDS)
        self.user.wait_for_text(final)
        self.assert_words(self.dictate(), PHRASE_WORDS)

    def test_there_is_no_sound_server_at_a_press(self):
        self.open_entry()
        self.desktop.stop_service("sound", signal.SIGKILL)
        mark = self.velloro.mark()
        self.user.press()
        line = self.velloro.wait_for("[Dictation] ", since=mark)
        self.assertRegex(line, "Failed to start recording: |Microphone permission not granted")
        self.user.release()

        self.desktop.start_sound()
        self.assert_words(self.dictate(), PHRASE_WORDS)

    def test_the_sound_server_hangs(self):
        self.open_entry()
        self.desktop.signal_service("sound", signal.SIGSTOP)
        mark = self.velloro.mark()
        began = time.monotonic()
        self.user.press()
        self.velloro.wait_for("[Dictation] Failed to start recording: ", since=mark)
        # Half a second for the server, the rest for the machine.
        self.assertLess(time.monotonic() - began, 1.2)
        self.user.release()
        self.desktop.signal_service("sound", signal.SIGCONT)
        self.assert_words(self.dictate(), PHRASE_WORDS)

        self.assertEqual(self.velloro.stop(timeout=5), 0)
        self.desktop.signal_service("sound", signal.SIGSTOP)
        began = time.monotonic()
        self.velloro.start()
        self.assertLess(time.monotonic() - began, 5)
        mark = self.velloro.mark()
        self.user.press()
        self.velloro.wait_for("[Dictation] Permission denied by user", since=mark)
        self.user.release()
        self.assertEqual(self.velloro.stop(timeout=5), 0)

    def dictate_after_a_start_while(self, send):
        """Starts anew while what `send` signals hangs, dictates into a terminal, and quits."""
        self.assertEqual(self.velloro.stop(timeout=5), 0)
        self.user.open_terminal()
        send(signal.SIGSTOP)
        mark = self.velloro.mark()
        began = time.monotonic()
        self.velloro.start()
        self.velloro.wait_for("[WhisperManager] Loaded model: ", since=mark)
        self.assertLess(time.monotonic() - began, 10)
        final = self.dictate()
        self.assert_words(final, PHRASE_WORDS)
        wait_for(lambda: final in self.user.terminal_text(), "the words in the terminal")
        self.assertEqual(self.velloro.stop(timeout=5), 0)
        send(signal.SIGCONT)

    def test_the_accessibility_bus_hangs_at_the_start(self):
        self.dictate_after_a_start_while(self.desktop.signal_accessibility_bus)

    def test_the_session_bus_hangs_at_the_start(self):
        self.dictate_after_a_start_while(
            lambda number: self.desktop.signal_service("bus", number))

    def test_the_accessibility_bus_ends(self):
        # A terminal: GTK's own half of the bus ends its application a moment after the bus.
        self.user.open_terminal()
        self.user.copy("copied before")
        self.desktop.stop_accessibility()
        final = self.dictate()
        self.assert_words(final, PHRASE_WORDS)
        wait_for(lambda: final in self.user.terminal_text(), "the words in the terminal")
        wait_for(lambda: self.user.clipboard() == "copied before", "the user's own clipboard")

        # A new bus and a new application, the same Velloro.
        self.desktop.start_accessibility()
        self.open_entry()
        final = self.dictate()
        self.user.wait_for_text(final)

    def test_the_application_is_stopped(self):
        application = self.open_entry()
        application.send_signal(signal.SIGSTOP)
        mark = self.velloro.mark()
        began = time.monotonic()
        self.user.press()
        self.velloro.wait_for("[AudioCapture] Started recording at ", since=mark)
        # Half a second for the question about the focus, the rest for the machine.
        self.assertLess(time.monotonic() - began, 1.5)
        self.user.speak(self.phrase())
        self.user.release()
        self.velloro.wait_for("[WhisperContext] Batch transcription complete: ", since=mark)
        began = time.monotonic()
        self.assert_words(self.finish(mark), PHRASE_WORDS)
        self.assertLess(time.monotonic() - began, 1.5)
        application.send_signal(signal.SIGCONT)

        self.open_entry()
        final = self.dictate()
        self.user.wait_for_text(final)

    def test_the_application_that_owns_the_clipboard_is_stopped(self):
        application = self.user.open(["zenity", "--entry", "--entry-text=copied"])
        self.user.wait_for_focus()
        self.user.keys("tap", "Control_L", "a", "tap", "Control_L", "c")
        wait_for(lambda: self.user.clipboard() == "copied", "the text on the clipboard")
        mark = self.start_recording()
        self.user.speak(self.phrase())
        application.send_signal(signal.SIGSTOP)
        self.user.release()
        self.velloro.wait_for("[WhisperContext] Batch transcription complete: ", since=mark)
        began = time.monotonic()
        self.velloro.wait_for("[Dictation] Final transcription: ", since=mark)
        # Less than half a second for the focus and the clipboard, the rest for the machine.
        self.assertLess(time.monotonic() - began, 0.7)
        self.assert_words(self.finish(mark), PHRASE_WORDS)
        # It had been read while he spoke.
        wait_for(lambda: self.user.clipboard() == "copied", "the user's own clipboard", timeout=2)
        application.send_signal(signal.SIGCONT)


if __name__ == "__main__":
    main()
