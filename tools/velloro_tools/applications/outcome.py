"""What became of a dictation."""

import dataclasses
import enum
import json


class Verdict(str, enum.Enum):
    ARRIVED = "arrived"
    REFUSED = "refused"
    NOTHING = "nothing arrived"
    CHANGED = "other text arrived"
    LOST = "the user's own text was lost"
    NOT_STARTED = "not tried"

    def __str__(self):
        return self.value


@dataclasses.dataclass
class Outcome:
    application: str
    mode: str
    version: str = ""
    verdict: Verdict = Verdict.NOT_STARTED
    # accessibility or paste, where it can be told
    way: str = ""
    remark: str = ""
    # What was heard, and what the field held after it.
    final: str = ""
    text: str = ""
    seconds: float = 0
    log: list = dataclasses.field(default_factory=list)

    def conclude(self, verdict, remark=""):
        self.verdict = verdict
        self.add_remark(remark)

    def add_remark(self, remark):
        self.remark = "; ".join(filter(None, [self.remark, remark]))

    def judge(self, before):
        """Compares the field's text with what it should be: what was there, and what was heard."""
        if self.text == before + self.final:
            self.conclude(Verdict.ARRIVED)
        elif self.text.rstrip() == before.rstrip():
            self.conclude(Verdict.NOTHING)
        elif not self.text.startswith(before.rstrip()):
            self.conclude(Verdict.LOST, f"the field holds {shortened(self.text)!r}")
        else:
            self.conclude(Verdict.CHANGED,
                          f"instead of {shortened(self.final)!r}: "
                          f"{shortened(self.text[len(before):])!r}")

    # --- kept from one run to the next ----------------------------------------------------------

    def write(self, path):
        path.write_text(json.dumps(dataclasses.asdict(self), indent=1))

    @staticmethod
    def read(path):
        """The kept outcome, or None."""
        if not path.exists():
            return None
        kept = Outcome(**json.loads(path.read_text()))
        kept.verdict = Verdict(kept.verdict)
        return kept


def shortened(text, length=60):
    return text if len(text) <= length else text[:length - 1] + "…"
