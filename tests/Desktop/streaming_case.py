"""What the tests that stream share."""

import re

from desktop_case import DesktopCase
from velloro_tools import models

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
