"""The table of the outcomes, for the documentation."""

from .dictation import BATCH, MODES, STREAMING
from .outcome import Verdict

HEADING = """# The applications that were dictated into

Made by `tools/applications` on {day}, which says below what the user of each application sees:
a sentence stands there already, the hotkey is held while a recording is spoken into the
microphone, and what the field holds after it is read where the user would find it: in the saved
file, on the page, in the terminal's line. "arrived" means that the field holds its sentence and
behind it the words that were heard, and nothing else. In batch mode Velloro was started before the
application, in streaming mode after it. "paste" is said where the clipboard was used for the final
text.

{summary}

| Application | Version | Toolkit | Batch | Streaming | Way | Remark |
|---|---|---|---|---|---|---|
"""


def table(applications, kept, day):
    """The document; `kept(application, mode)` is an outcome or None."""
    rows, arrived = [], dict.fromkeys(MODES, 0)
    for application in applications:
        outcomes = {mode: kept(application, mode) for mode in MODES}
        for mode, outcome in outcomes.items():
            arrived[mode] += bool(outcome and outcome.verdict == Verdict.ARRIVED)
        if any(outcomes.values()):
            rows.append(row(application, outcomes))
    summary = (f"{len(rows)} fields in {len({row[2] for row in rows})} applications' versions: "
               f"the words arrived in {arrived[BATCH]} in batch mode and in {arrived[STREAMING]} "
               "in streaming mode.")
    return (HEADING.format(day=day, summary=summary)
            + "".join("| " + " | ".join(map(cell, row)) + " |\n" for row in rows))


def row(application, outcomes):
    seen = [outcome for outcome in outcomes.values() if outcome]
    ways = list(dict.fromkeys(outcome.way for outcome in seen if outcome.way))
    remarks = {}
    for outcome in seen:
        if outcome.remark:
            remarks.setdefault(outcome.remark, []).append(outcome.mode)
    told = [remark if len(modes) == len(seen) else f"{' and '.join(modes)}: {remark}"
            for remark, modes in remarks.items()]
    return [application.name, next((outcome.version for outcome in seen if outcome.version), ""),
            application.toolkit, *(str(outcomes[mode].verdict) if outcomes[mode] else ""
                                   for mode in MODES),
            " / ".join(ways), "; ".join(told)]


def cell(text):
    return text.replace("|", "\\|").replace("\n", " ")
