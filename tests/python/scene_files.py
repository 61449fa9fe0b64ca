"""Scene files for tests: bytes made by hand from the description of the format, and exported samples."""

import functools
import json
import os
import pathlib
import struct
import subprocess
import tempfile

COMMAND = os.environ["TV2_COMMAND"]
SAMPLES = pathlib.Path(os.environ["TV2_SAMPLES_DIR"])
_folder = tempfile.TemporaryDirectory()
FOLDER = pathlib.Path(_folder.name)

INTEGER, VECTOR_3, SLERP = 8, 3, 6
NO_TRACK = struct.pack("<I", 0)


def units(text):
    """A string of the file; `text` is a str, or a list of UTF-16 units."""
    numbers = list(text.encode("utf-8")) if isinstance(text, str) else text
    return struct.pack(f"<H{len(numbers)}H", len(numbers), *numbers)


def track(kind, times, values):
    """Values are tuples of floats, or integers."""
    body = b"".join(struct.pack("<i", value) if kind == INTEGER else struct.pack(f"<{len(value)}f", *value)
                    for value in values)
    return (struct.pack("<IIIf", 1, kind, 0, 0) + struct.pack(f"<I{len(times)}f", len(times), *times) +
            struct.pack("<I", len(values)) + body)


def properties(texts=(), integers=()):
    """Texts are pairs of a name and strings, integers of a name and a track."""
    return (struct.pack("<I", len(texts)) +
            b"".join(units(name) + struct.pack("<I", len(strings)) + b"".join(map(units, strings))
                     for name, strings in texts) +
            struct.pack("<I", len(integers)) + b"".join(units(name) + keys for name, keys in integers) + bytes(12))


def node(name, parent=-1, translation=NO_TRACK, rotation=NO_TRACK, scale=NO_TRACK, own=properties()):
    return units(name) + struct.pack("<i", parent) + translation + rotation + scale + units("") + own


def chunk(kind, body):
    return struct.pack("<II", 8 + len(body), kind) + body


def scene_file(*nodes, switcher=NO_TRACK, more=b""):
    """A file of the newest version with these nodes, from 0 to 1 second."""
    return (b"\x012VT" + chunk(0, struct.pack("<f", 1.16) + units("Hand") + units("BY:\tme\r\n")) +
            chunk(2, struct.pack("<ff", 0, 1) + NO_TRACK + struct.pack("<I", 0) + bytes(8)) + chunk(22, switcher) +
            more + chunk(12, struct.pack("<I", len(nodes)) + b"".join(nodes)))


def written(name, data):
    """A file of these bytes."""
    path = FOLDER / name
    path.write_bytes(data)
    return str(path)


def run(*arguments):
    return subprocess.run([COMMAND, *map(str, arguments)], capture_output=True, text=True, check=False)


def answer(*arguments):
    """What the command prints as JSON."""
    return json.loads(run(*arguments, "--json").stdout)


@functools.lru_cache(maxsize=None)
def exported(sample, take=None):
    """A take of a sample, as the command exports it."""
    path = FOLDER / (sample + ".tv2")
    done = run("export", SAMPLES / sample, path, *(["--take", take] if take else []))
    if done.returncode != 0:
        raise RuntimeError(done.stderr)
    return str(path)
