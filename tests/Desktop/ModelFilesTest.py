"""Models that are missing or broken: nothing is lost, and the right file mends it."""

import os

from desktop_case import BUSY, PHRASE_WORDS, DesktopCase, main

# The preset "Small" is loaded from this file just in time.
FILE = "ggml-base.bin"


class ModelFilesTest(DesktopCase):
    def press_and_expect(self, *starts):
        """Presses and releases, and awaits lines that begin so, in this order."""
        mark = self.velloro.mark()
        self.user.press()
        position = mark
        for start in starts:
            line = self.velloro.wait_for(start, since=position)
            position = self.velloro.lines.index(line, position) + 1
        self.user.release()

    def try_file(self, content, *starts):
        """With a model file of this content (None: no file), a press leads to the lines; after
        the right file has come, to words."""
        self.velloro.set_up(selectedModel="Small")
        self.velloro.models_folder.mkdir(parents=True, exist_ok=True)
        file = self.velloro.models_folder / FILE
        if content is not None:
            file.write_bytes(content)
        self.velloro.start()
        self.user.open(["zenity", "--entry"])
        self.user.wait_for_focus()

        attempt = "[Dictation] Model not loaded, attempting to load selected model..."
        self.press_and_expect(attempt, *starts)
        self.assertFalse(self.microphone_is_open())

        file.unlink(missing_ok=True)
        file.symlink_to(self.present[self.model])
        mark = self.velloro.mark()
        final = self.dictate()
        self.velloro.wait_for("[Dictation] Successfully loaded model JIT", since=mark)
        self.assert_words(final, PHRASE_WORDS)
        self.user.wait_for_text(final)
        self.assertFalse([line for line in self.velloro.lines if line.startswith(BUSY)])

    def try_broken_file(self, content):
        path = self.velloro.models_folder / FILE
        self.try_file(content, f"[WhisperContext] Couldn't load model at {path}",
                      "[Dictation] Failed to load model JIT: ")

    def test_no_file(self):
        self.try_file(None, "[Dictation] Cannot start recording: model not downloaded.")

    def test_truncated_file(self):
        whole = self.present[self.model].read_bytes()
        self.try_broken_file(whole[:len(whole) // 2])

    def test_noise(self):
        self.try_broken_file(os.urandom(1_000_000))

    def test_empty_file(self):
        self.try_broken_file(b"")


if __name__ == "__main__":
    main()
