"""Builds the benchmarks, runs them all and prints a table: each figure beside what it is measured
against in the same run. Times are medians. They are worth something on a machine that does nothing
else meanwhile (or started with `chrt --rr 5`, as root).

Models are taken from the folder that VELLORO_MODEL_DIR names and from .deps/models, where the base
model and its 8-bit form are made if they are missing.
"""

import argparse
import datetime
import json
import os
import pathlib
import platform
import subprocess
import sys
import tempfile

import program
import recognition
from velloro_tools import models
from velloro_tools.desktop import DesktopError
from velloro_tools.models import CACHE
from velloro_tools.places import ROOT

BUILD = ROOT / "build/benchmark"
# How much faster than the default build each model is to be.
SPEED_UP = {"tiny.en-q5_1": 2.5, "base-q5_1": 2.5, "base-q8_0": 2.5, "base": 1.75}
ROWS = []


def add(figure, value, anchor, aim, met):
    """A row of the table, told at once. `met` is None where nothing could be measured."""
    verdict = {True: "met", False: "MISSED", None: "not measured"}[met]
    ROWS.append((figure, value, anchor, aim, verdict))
    print(f"{figure}: {value}; {anchor}; {verdict}", file=sys.stderr, flush=True)


def milliseconds(seconds):
    return f"{seconds * 1e3:.3g} ms" if seconds < 1e-1 else f"{seconds * 1e3:.0f} ms"


def megabytes(size):
    return f"{size / 1e6:.0f} MB"


def processor_name():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.partition(":")[2].strip()
    return platform.machine()


# --- the parts -----------------------------------------------------------------------------------

def prepare():
    subprocess.run([ROOT / "tools/setup"], check=True)
    if not (BUILD / "build.ninja").exists():
        subprocess.run(["cmake", "--preset", "benchmark"], cwd=ROOT, check=True,
                       stdout=subprocess.DEVNULL)
    for build, target in ((BUILD, "benchmarks"),
                          (ROOT / ".deps/whisper-build", "whisper-default")):
        subprocess.run(["cmake", "--build", build, "--target", target], check=True,
                       stdout=subprocess.DEVNULL)


def find_models():
    found = models.models_in(os.environ.get(models.ENVIRONMENT_FOLDER))
    found = models.models_in(CACHE) | found
    for model in ("base", "base-q8_0"):
        if model not in found:
            try:
                models.make(model, CACHE / models.file_name(model))
                found[model] = CACHE / models.file_name(model)
            except models.ModelError as error:
                print(error, file=sys.stderr)
    return found


def recognise(found, repetitions):
    peaks, base = {}, None
    for model, aim in SPEED_UP.items():
        figure = f"recording of 11 s to text, {model}, one thread"
        if model not in found:
            add(figure, "-", "-", f"{aim:g} × faster", None)
            continue
        ours, default = recognition.compare(found[model], repetitions)
        if model == "base":
            base = ours
        if not ours or not default:
            add(figure, f"{ours.wall:.2f} s" if ours else "fails",
                "the default build fails" if not default else f"default build {default.wall:.2f} s",
                f"{aim:g} × faster", None if ours else False)
            continue
        peaks[model] = default.peak
        factor = default.wall / ours.wall
        add(figure, f"{ours.wall:.2f} s (processor {ours.processor:.2f} s)",
            f"default build {default.wall:.2f} s (processor {default.processor:.2f} s): "
            f"{factor:.2f} × faster", f"{aim:g} × faster", factor >= aim)
        if ours.text != default.text:
            print(f"The builds differ on {model}:\n  {ours.text}\n  {default.text}",
                  file=sys.stderr)
    figure = "the same, base, model loaded"
    try:
        wall, processor = recognition.run_ctranslate2(repetitions)
    except (OSError, subprocess.CalledProcessError, RuntimeError) as error:
        print(f"CTranslate2 can't be measured: {error}", file=sys.stderr)
        add(figure, "-", "CTranslate2 int8", "as fast", None)
    else:
        if base:
            took = base.wall - base.load
            add(figure, f"{took:.2f} s",
                f"CTranslate2 int8 {wall:.2f} s (processor {processor:.2f} s)",
                "as fast", took <= wall)
    return peaks


def run_program(name, **environment):
    """{name: (processor seconds, clock seconds)}, medians, of a Google Benchmark program."""
    with tempfile.NamedTemporaryFile() as report:
        # Into a file, since what is measured may print, too.
        subprocess.run(
            [BUILD / "benchmarks" / name, f"--benchmark_out={report.name}",
             "--benchmark_repetitions=9", "--benchmark_min_time=0.2",
             "--benchmark_report_aggregates_only=true"],
            env=os.environ | environment, check=True, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL)
        results = json.load(report)["benchmarks"]
    units = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
    return {each["run_name"].partition("/")[0]:
            (each["cpu_time"] * units[each["time_unit"]],
             each["real_time"] * units[each["time_unit"]])
            for each in results if each["aggregate_name"] == "median"}


def compute(found):
    took = run_program("TextCorrectorBenchmark")["correct"][0]
    add("text correction of 200 English words", milliseconds(took), "", "1 ms", took <= 1e-3)

    times = run_program("AudioProcessingBenchmark")
    ours, theirs = times["processSecond"][0], times["copySecond"][0]
    add("mix-down, resampling and level of 1 s of 48 kHz stereo", milliseconds(ours),
        f"copy of the same data {milliseconds(theirs)}: {ours / theirs:.1f} ×", "10 × the copy",
        ours / theirs <= 10)

    figure = "loading a model of 60 MB"
    if "base-q5_1" not in found:
        add(figure, "-", "-", "2 × the read", None)
        return
    times = run_program("ModelLoadBenchmark", VELLORO_BENCHMARK_MODEL=str(found["base-q5_1"]))
    ours, theirs = times["loadModel"][0], times["readFile"][0]
    add(figure, milliseconds(ours),
        f"reading the file {milliseconds(theirs)}: {ours / theirs:.1f} ×", "2 × the read",
        ours / theirs <= 2)


def watch_program(found, peaks, arguments):
    velloro = BUILD / "src/velloro"
    ours, theirs = program.start_times(velloro, BUILD / "benchmarks/idle-program",
                                       arguments.repetitions * 2 + 1)
    add("start to hotkey registered", milliseconds(ours),
        f"a Qt program that does nothing {milliseconds(theirs)}", "its time + 100 ms",
        ours <= theirs + 0.1)

    resident, woken = program.tray_only(velloro, arguments.idle_seconds)
    add("resident memory without a model, tray only", megabytes(resident), "", "70 MB",
        resident <= 70e6)
    add("wake-ups of an idle Velloro in a minute", f"{woken * 60 / arguments.idle_seconds:.0f}",
        "", "0", woken == 0)

    model = models.choose(found, wanted="base-q5_1") or models.choose(found)
    if not model:
        add("from key release to the text, less whisper_full", "-", "", "10 ms", None)
        return
    seen = program.dictations(BUILD / "benchmarks/velloro-timed", model, found[model],
                              arguments.dictations, arguments.recording_seconds)
    add("from key release to the text, less whisper_full", milliseconds(seen["delay"]),
        f"before it {milliseconds(seen['before'])}, after it {milliseconds(seen['after'])}",
        "10 ms", seen["delay"] <= 0.01)
    add("processor time while recording without recognition",
        f"{seen['recording'] * 100:.2f} %", "", "1 % of one core", seen["recording"] <= 0.01)
    add("processor time while recording speech, the pill shown and moving",
        f"{seen['pill'] * 100:.2f} %", "", "3 % of one core", seen["pill"] <= 0.03)
    add("from the call for the start cue to its sound at the output", milliseconds(seen["cue"]),
        "", "30 ms", seen["cue"] <= 0.03)
    if model in peaks:
        limit = peaks[model] + 100e6
        for when, size in (("idle", seen["idle"]), ("at its peak", seen["peak"])):
            add(f"resident memory with {model}, {when}", megabytes(size),
                f"whisper-cli's peak {megabytes(peaks[model])}", "its peak + 100 MB", size <= limit)


# --- the table -----------------------------------------------------------------------------------

def print_table(started):
    print(f"{processor_name()}, {os.cpu_count()} processors, {platform.system()} "
          f"{platform.machine()}, {started:%Y-%m-%d}\n")
    print("| figure | measured | anchor in the same run | aim | |\n|---|---|---|---|---|")
    for row in ROWS:
        print("| " + " | ".join(row) + " |")
    missed = sum(row[-1] == "MISSED" for row in ROWS)
    print(f"\n{missed} of {len(ROWS)} missed")


def main():
    parser = argparse.ArgumentParser(prog="benchmarks/run", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--repetitions", type=int, default=5, metavar="N",
                        help="of each recognition and, twice as many, of each start")
    parser.add_argument("--dictations", type=int, default=15, metavar="N")
    parser.add_argument("--idle-seconds", type=int, default=60, metavar="S")
    parser.add_argument("--recording-seconds", type=int, default=20, metavar="S")
    arguments = parser.parse_args()
    started = datetime.datetime.now()
    prepare()
    found = find_models()
    compute(found)
    peaks = recognise(found, arguments.repetitions)
    try:
        watch_program(found, peaks, arguments)
    except DesktopError as error:
        print(f"Nothing can be measured on a private desktop: {error}", file=sys.stderr)
    print_table(started)


if __name__ == "__main__":
    main()
