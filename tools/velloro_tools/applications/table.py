"""The table of the outcomes, for the documentation."""

from .dictation import BATCH, MODES, STREAMING
from .outcome import Verdict
from .root import SUITE

HEADING = """# The applications that were dictated into

Made by `tools/applications` on {day}, with the applications of Debian {suite} on X11. Each had a
sentence in its field already; the hotkey was held while a recording was spoken into the microphone
(when streaming, until the first words were certain), and what the field held after it was read
where the user would find it: in the saved file, on the page, in the terminal's line.

"arrived" means that the field holds its sentence, behind it the words that were heard, and nothing
else. The way is "paste" where the clipboard was taken, "accessibility" where the words arrived
without it. In batch mode Velloro was started before the application, in streaming mode after it.

Debian has no Electron program. foot works on Wayland only. roxterm, mrxvt, aterm, kterm, xvt,
LilyTerm and EvilVTE are not in this release.

{summary}

| Application | Version | Toolkit | Batch | Streaming | Way | Remark |
|---|---|---|---|---|---|---|
"""


def table(applications, kept, day):
    """The document; `kept(application, mode)` is an outcome or None."""
    rows, packages, arrived = [], set(), dict.fromkeys(MODES, 0)
    for application in applications:
        outcomes = {mode: kept(application, mode) for mode in MODES}
        for mode, outcome in outcomes.items():
            arrived[mode] += bool(outcome and outcome.verdict == Verdict.ARRIVED)
        if any(outcomes.values()):
            rows.append(row(application, outcomes))
            packages.add(application.package)
    summary = (f"Of {len(rows)} fields, in the programs of {len(packages)} packages, the words "
               f"arrived in {arrived[BATCH]} in batch mode and in {arrived[STREAMING]} in "
               "streaming mode.")
    return (HEADING.format(day=day, suite=SUITE, summary=summary)
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
    told += [application.remark] if application.remark else []
    return [application.name, next((outcome.version for outcome in seen if outcome.version), ""),
            application.toolkit, *(str(outcomes[mode].verdict) if outcomes[mode] else ""
                                   for mode in MODES),
            " / ".join(ways), "; ".join(told)]


def cell(text):
    return text.replace("|", "\\|").replace("\n", " ")
