"""Ends whatever a private desktop started, also when its owner had no time to.

Every process of a desktop carries the desktop's folder in its environment. `sweep` ends all that
do. As a program (`watchdog.py FOLDER`, standard input being a pipe whose other end the owner
holds), it detaches itself, waits until the pipe is closed, sweeps and removes the folder.
"""

import os
import shutil
import signal
import sys
import time

MARK = "VELLORO_PRIVATE_DESKTOP"


def marked_processes(folder):
    """The process ids that carry the folder's mark, our own excluded."""
    wanted = f"{MARK}={folder}".encode()
    found = []
    for entry in os.listdir("/proc"):
        if entry.isdigit() and int(entry) != os.getpid():
            try:
                with open(f"/proc/{entry}/environ", "rb") as environment:
                    if wanted in environment.read().split(b"\0"):
                        found.append(int(entry))
            except OSError:
                pass  # gone meanwhile, or another user's
    return found


def session_of(pid):
    try:
        return os.getsid(pid)
    except ProcessLookupError:
        return None


def sweep(folder, grace=1.0, spare=()):
    """Asks the desktop's processes to end; after `grace` seconds, ends them.

    Those whose session is one of `spare` are left alone.
    """
    deadline = time.monotonic() + grace
    asked = set()
    while running := [pid for pid in marked_processes(folder) if session_of(pid) not in spare]:
        late = time.monotonic() > deadline
        for pid in running:
            if late or pid not in asked:
                asked.add(pid)
                try:
                    os.kill(pid, signal.SIGCONT)
                    os.kill(pid, signal.SIGKILL if late else signal.SIGTERM)
                except ProcessLookupError:
                    pass
        if late and time.monotonic() > deadline + 5:
            break
        # Others' children can't be waited for, only looked at again.
        time.sleep(0.02)


def main():
    if os.fork():
        return
    os.setsid()
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, signal.SIG_IGN)
    folder = sys.argv[1]
    while os.read(0, 1):
        pass
    if os.path.isdir(folder):
        sweep(folder)
        shutil.rmtree(folder, ignore_errors=True)


if __name__ == "__main__":
    main()
