"""Runs dictations one after the other; none can stop the next."""

import multiprocessing

from .dictation import Dictation
from .outcome import Outcome, Verdict

# Seconds for one dictation beside the time that the application's window may take.
LIMIT = 150


def run_limited(dictation, application, mode):
    """The outcome, also when the dictation hangs or ends in an error of its own."""
    # In a process of its own: a desktop ends, whatever hangs there, when its owner does.
    context = multiprocessing.get_context("fork")
    reading, writing = context.Pipe(duplex=False)
    process = context.Process(target=_run, args=[dictation, writing])
    process.start()
    writing.close()
    outcome = Outcome(application.name, mode)
    try:
        if reading.poll(LIMIT + application.start_limit):
            outcome = reading.recv()
            process.join(20)
        else:
            outcome.conclude(Verdict.NOT_STARTED, "took too long")
    except EOFError:
        outcome.conclude(Verdict.NOT_STARTED, "the dictation's process ended")
    finally:
        process.kill()
        process.join()
        reading.close()
    return outcome


def _run(dictation, writing):
    writing.send(dictation.outcome())


class Runner:
    """Dictates into applications and keeps each outcome in the folder at once."""

    def __init__(self, root, program, model, folder, say):
        self._root, self._program, self._model = root, program, model
        self._folder, self._say = folder, say
        folder.mkdir(parents=True, exist_ok=True)

    def run(self, applications, modes, again):
        """What was tried already is left out, unless `again`."""
        for application in applications:
            for mode in modes:
                kept = self.kept(application, mode)
                if again or not kept or kept.verdict == Verdict.NOT_STARTED:
                    self._run_one(application, mode)

    def kept(self, application, mode):
        return Outcome.read(self._path(application, mode))

    def _run_one(self, application, mode):
        dictation = Dictation(application, mode, self._root, self._program, self._model,
                              self._folder)
        outcome = run_limited(dictation, application, mode)
        outcome.write(self._path(application, mode))
        self._say("  ".join(filter(None, [f"{application.name}, {mode}: {outcome.verdict}",
                                          outcome.way, outcome.remark,
                                          f"({outcome.seconds:g} s)"])))

    def _path(self, application, mode):
        return self._folder / f"{application.slug}.{mode}.json"
