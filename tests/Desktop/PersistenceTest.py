"""What is kept, whatever happens; and how the program starts and ends."""

import signal
import stat
import time

from desktop_case import PHRASE_WORDS, DesktopCase, main
from velloro_tools.desktop import wait_for

CHOSEN = {
    "recordingMode": "Hold to Talk", "selectedModel": "Large", "selectedLanguage": "en",
    "playSounds": False, "launchAtLogin": True, "insertAsPlainText": False,
    "enableRealtimeStreaming": False, "enableTextCorrection": False,
    "hasCompletedOnboarding": True, "requireTextFieldFocus": False,
    "customDictionary": ["Zürich", "naïve", "日本"],
}


class PersistenceTest(DesktopCase):
    def assert_kept(self):
        stored = self.velloro.settings()
        mappings = {"Large": self.model}
        self.assertEqual({key: stored.get(key) for key in [*CHOSEN, "presetMappings"]},
                         CHOSEN | {"presetMappings": mappings})
        self.assertEqual(stat.S_IMODE(self.velloro.settings_file.stat().st_mode), 0o600)

    def test_everything_survives_a_restart_and_a_kill(self):
        self.start_velloro(**CHOSEN)
        self.user.open(["zenity", "--entry"])
        self.user.wait_for_focus()
        first = self.dictate()
        self.assert_words(first, PHRASE_WORDS)
        self.assertEqual(self.velloro.stop(), 0)
        self.assert_kept()
        self.assertEqual(self.velloro.history(), [first])

        mark = self.velloro.mark()
        self.velloro.start()
        self.velloro.wait_for("[WhisperManager] Loaded model: ", since=mark)
        second = self.dictate()
        self.velloro.stop(signal.SIGKILL)
        self.assert_kept()
        self.assertEqual(self.velloro.history(), [second, first])

        # The next start is as if nothing had happened.
        self.velloro.start()
        self.assert_kept()
        self.assertEqual(self.velloro.history(), [second, first])

    def test_a_damaged_settings_file_is_set_aside_and_the_program_starts_fresh(self):
        self.velloro.set_up(model=self.model, model_file=self.present[self.model], **CHOSEN)
        damaged = self.velloro.settings_file.read_bytes()[:-1] + b', "velloro.playSounds": "\xff"'
        self.velloro.settings_file.write_bytes(damaged)
        self.velloro.start()
        self.velloro.wait_for(f"[UserDefaults] {self.velloro.settings_file} is damaged ")
        self.assertEqual(self.velloro.stop(), 0)

        mark = self.velloro.mark()
        self.velloro.start()
        self.velloro.stop()
        self.assertFalse([line for line in self.velloro.lines[mark:] if "damaged" in line])
        aside, = self.velloro.settings_file.parent.glob("settings.json.damaged-*")
        self.assertEqual(aside.read_bytes(), damaged)

        # Nor does what is no file at all keep it from its work, or go.
        self.velloro.settings_file.unlink()
        (self.velloro.settings_file / "something").mkdir(parents=True)
        mark = self.velloro.mark()
        self.velloro.start()
        self.velloro.wait_for(f"[UserDefaults] {self.velloro.settings_file} is not a file",
                              since=mark)
        self.assertEqual(self.velloro.stop(), 0)
        self.assertTrue((self.velloro.settings_file / "something").exists())

    def test_signals_end_it_cleanly(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number.name):
                mark = self.velloro.mark()
                self.start_velloro()
                self.assertEqual(self.velloro.stop(number), 0)
                self.velloro.lines[mark:].index(
                    "[WhisperManager] unloadModel called. Context exists: true")

    def test_a_signal_while_recording_ends_it_at_once(self):
        self.start_velloro(requireTextFieldFocus=False)
        self.start_recording()
        began = time.monotonic()
        self.assertEqual(self.velloro.stop(), 0)
        self.assertLess(time.monotonic() - began, 3)
        wait_for(lambda: not self.microphone_is_open(), "the microphone's end", timeout=5)
        self.user.release()

    def test_a_second_start_ends_and_leaves_the_first_alone(self):
        self.start_velloro()
        second = self.desktop.start([self.velloro.process.args[0]], log="second")
        self.assertEqual(second.wait(10), 0)
        self.assertNotIn("[HotkeyManager]", self.desktop.log("second"))
        self.user.open(["zenity", "--entry"])
        self.user.wait_for_focus()
        self.assert_words(self.dictate(), PHRASE_WORDS)


if __name__ == "__main__":
    main()
