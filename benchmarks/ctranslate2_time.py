"""Recognises a 16 kHz recording with CTranslate2 (int8 weights, greedy, one thread) and prints, as
JSON, the seconds that each repetition took, its processor seconds, and the text's token ids. The
model is loaded before.

usage: ctranslate2_time.py MODEL_FOLDER RECORDING REPETITIONS
"""

import json
import sys
import time
import wave

import ctranslate2
import numpy

START, ENGLISH, TRANSCRIBE, NO_TIMESTAMPS = 50258, 50259, 50359, 50363
FFT, HOP, SAMPLES = 400, 160, 480_000


def read(path):
    with wave.open(path) as sound:
        samples = numpy.frombuffer(sound.readframes(sound.getnframes()), numpy.int16)
    return samples.astype(numpy.float32) / 32768


def mel_spectrogram(samples, filters):
    padded = numpy.pad(numpy.pad(samples, (0, SAMPLES - len(samples))), FFT // 2, mode="reflect")
    window = numpy.hanning(FFT + 1)[:-1].astype(numpy.float32)
    frames = numpy.lib.stride_tricks.sliding_window_view(padded, FFT)[::HOP][:3000] * window
    power = numpy.abs(numpy.fft.rfft(frames, axis=1).astype(numpy.complex64)) ** 2
    log = numpy.log10(numpy.maximum(filters @ power.T, 1e-10))
    log = numpy.maximum(log, log.max() - 8)
    return ((log + 4) / 4).astype(numpy.float32)


def main():
    folder, recording, repetitions = sys.argv[1:]
    with open(folder + "/filters.json") as file:
        filters = numpy.array(json.load(file), numpy.float32).reshape(80, -1)
    samples = read(recording)
    model = ctranslate2.models.Whisper(folder, device="cpu", compute_type="int8", inter_threads=1,
                                       intra_threads=1)
    times, processor, tokens = [], [], []
    for _ in range(int(repetitions)):
        start, start_processor = time.perf_counter(), time.process_time()
        features = ctranslate2.StorageView.from_array(mel_spectrogram(samples, filters)[None])
        result = model.generate(features, [[START, ENGLISH, TRANSCRIBE, NO_TIMESTAMPS]],
                                beam_size=1)
        tokens = result[0].sequences_ids[0]
        times.append(time.perf_counter() - start)
        processor.append(time.process_time() - start_processor)
    print(json.dumps({"wall": times, "processor": processor, "tokens": tokens}))


if __name__ == "__main__":
    main()
