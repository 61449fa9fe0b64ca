"""TEV2 scene files: load, look at, change, make and save them.

Lengths are metres, angles radians, times seconds. Arrays are NumPy arrays; those of a scene are read-only views of its
memory, without a copy, which keep the scene alive. A scene, and everything taken from it, is for one thread at a time.
"""

from collections.abc import MutableMapping, Sequence

from tev2._errors import CheckFinding, Conversion, ConversionError, Error, Finding, LoadError, SaveError
from tev2._record import Record
from tev2._tev2 import (Camera, Clip, Node, Nodes, Properties, Scene, Track, __version__, check, check_codes, from_glb,
                        load, load_clip, loads, to_glb)

__all__ = ["Camera", "CheckFinding", "Clip", "Conversion", "ConversionError", "Error", "Finding", "LoadError", "Node",
           "Nodes", "Properties", "Record", "SaveError", "Scene", "Track", "__version__", "check", "check_codes",
           "from_glb", "load", "load_clip", "loads", "to_glb"]

# What follows from their own methods.
for _of, _class, _names in ((MutableMapping, Properties, ("__eq__", "__hash__", "clear", "pop", "popitem", "setdefault",
                                                          "update")),
                            (Sequence, Nodes, ("__reversed__", "count", "index"))):
    _of.register(_class)
    for _name in _names:
        setattr(_class, _name, getattr(_of, _name))
