"""Dictates into real applications, in batch and in streaming mode, and writes what became of it as
a table.

The applications live in a Debian root of their own, made on the first run (about 5 GB; mmdebstrap
and bubblewrap are needed), never on the machine itself. Each dictation has a private desktop with a
fresh home. What is known already is kept, so that an interrupted run goes on where it ended;
applications that are named are tried again.
"""

import argparse
import datetime
import os
import pathlib
import shutil
import signal
import sys

from .. import models
from ..places import PROGRAM, RECORDING, ROOT
from .catalogue import APPLICATIONS
from .dictation import MODES
from .root import Root, RootError, check_needs
from .runner import Runner
from .table import table


def say(text):
    print(text, flush=True)


def parse_arguments():
    parser = argparse.ArgumentParser(prog="tools/applications", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("names", nargs="*", metavar="NAME",
                        help="only applications whose name begins so, in any case of letters")
    parser.add_argument("--list", action="store_true", help="print the applications' names")
    parser.add_argument("--install-only", action="store_true",
                        help="make the root, dictate nothing")
    parser.add_argument("--mode", choices=MODES, help="only this mode")
    parser.add_argument("--again", action="store_true", help="forget what is known already")
    parser.add_argument("--folder", type=pathlib.Path, default=ROOT / ".deps/applications",
                        help="where the root is kept")
    parser.add_argument("--results", type=pathlib.Path, default=ROOT / "out/applications",
                        help="where outcomes, logs and pictures are kept")
    parser.add_argument("--table", type=pathlib.Path, default=ROOT / "docs/applications.md",
                        help="the table's file")
    parser.add_argument("--program", type=pathlib.Path, default=PROGRAM)
    return parser.parse_args()


def chosen(names):
    """The applications with these names, all if there are none."""
    applications = [application for application in APPLICATIONS
                    if not names or any(application.name.lower().startswith(name.lower())
                                        for name in names)]
    if not applications:
        sys.exit("applications: no application has such a name; see --list")
    return applications


def find_model():
    """The quickest that is there hears the recordings well enough."""
    present = models.models_in(models.CACHE) | models.models_in(
        os.environ.get(models.ENVIRONMENT_FOLDER))
    if not present:
        return models.obtain(say=say)
    return min(present.items(), key=lambda model: model[1].stat().st_size)


def install(root, applications):
    packages = [package for application in applications for package in application.packages]
    missing = root.install(list(dict.fromkeys(packages)), say)
    if missing:
        say("Not installed: " + " ".join(missing))


def main():
    arguments = parse_arguments()
    applications = chosen(arguments.names)
    if arguments.list:
        say("\n".join(application.name for application in applications))
        return
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda number, _frame: sys.exit(128 + number))
    check_needs()
    root = Root(arguments.folder)
    install(root, applications)
    if arguments.install_only:
        return
    if not arguments.program.exists() or not RECORDING.exists():
        sys.exit(f"applications: build {arguments.program} first")

    if arguments.again and not arguments.names and not arguments.mode:
        shutil.rmtree(arguments.results, ignore_errors=True)
    runner = Runner(root, arguments.program, find_model(), arguments.results, say)
    runner.run(applications, [arguments.mode] if arguments.mode else MODES,
               again=arguments.again or arguments.names)
    arguments.table.write_text(
        table(APPLICATIONS, runner.kept, datetime.date.today().isoformat()))
    say(f"Table: {arguments.table}")


if __name__ == "__main__":
    try:
        main()
    except (RootError, models.ModelError) as error:
        sys.exit(f"applications: {error}")
    except KeyboardInterrupt:
        sys.exit(128 + signal.SIGINT)
