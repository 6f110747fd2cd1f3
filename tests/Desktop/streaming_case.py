"""What the tests that stream share."""

import contextlib
import itertools
import re
import time

from desktop_case import BUSY, JFK, JFK_WORDS, DesktopCase
from velloro_tools import models
from velloro_tools.desktop import DesktopError, wait_for

STARTED = "[Dictation] Started recording with realtime streaming"
TYPED = re.compile(r"\[Dictation\] (?:Streaming start|Confirmed|Streaming edge): .*?"
                   r"\((?:total: )?(\d+)(?: chars)?\)$")


class StreamingCase(DesktopCase):
    def setUp(self):
        super().setUp()
        # What is quick comes first here.
        self.model = models.choose(self.present, wanted="tiny.en-q5_1") or self.model

    def start_streaming(self, **settings):
        self.start_velloro(enableRealtimeStreaming=True, **settings)

    def start_recording(self):
        mark = self.velloro.mark()
        self.user.press()
        self.velloro.wait_for(STARTED, since=mark)
        return mark

    def counted(self, mark):
        """How many characters have been typed."""
        counts = [TYPED.match(line) for line in self.velloro.lines[mark:]]
        return max((int(count[1]) for count in counts if count), default=0)

    def speak_and_watch(self, mark, read):
        """Speaks, then holds the key until words stand in the application and no more come; the
        texts seen, one after the other."""
        seen = []
        growth = time.monotonic()
        speech = self.user.start_speaking(JFK)

        def look():
            nonlocal growth
            text = read()
            if text and (not seen or seen[-1] != text):
                seen.append(text)
                growth = time.monotonic()
            return (speech.poll() is not None and text and len(text) == self.counted(mark)
                    and time.monotonic() > growth + 0.5)
        wait_for(look, "all that was counted in the application", timeout=60, interval=0.2)
        return seen

    def dictate_and_check(self, read):
        mark = self.start_recording()
        seen = self.speak_and_watch(mark, read)
        final = self.end_recording(mark)
        with contextlib.suppress(DesktopError):
            wait_for(lambda: read() == final, "the final text alone")
        self.assertEqual(read(), final)
        self.assert_words(final, JFK_WORDS)
        # It only ever grew.
        self.assertTrue(seen)
        for before, after in itertools.pairwise(seen):
            self.assertTrue(after.startswith(before), (before, after))
        deletion = [line for line in self.velloro.lines[mark:]
                    if " characters of streaming" in line]
        self.assertEqual(
            deletion, [f"[Dictation] Deleting {self.counted(mark)} characters of streaming text"])
        # The hotkey is held for long, and repeats itself.
        self.assertEqual(sum(line == STARTED for line in self.velloro.lines[mark:]), 1)
        self.assertFalse([line for line in self.velloro.lines if line.startswith(BUSY)])
        return final
