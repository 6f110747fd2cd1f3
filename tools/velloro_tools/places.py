"""Where things lie in the source tree."""

import pathlib

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = ROOT / "build/release/src/velloro"
DESKTOP_FILE = ROOT / "packaging/velloro.desktop.in"
WHISPER = ROOT / ".deps/whisper"
# A human voice, which whisper.cpp's sources have for trying it.
RECORDING = WHISPER / "share/jfk.wav"
