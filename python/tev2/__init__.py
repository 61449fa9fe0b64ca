"""TEV2 scene files: load, look at, change, make and save them.

Lengths are metres, angles radians, times seconds. Arrays are NumPy arrays; those of a scene are read-only views of its
memory, without a copy, which keep the scene alive. A scene, and everything taken from it, is for one thread at a time.
"""

from collections.abc import MutableMapping, Sequence

from tev2._errors import Error, Finding, LoadError, SaveError
from tev2._tev2 import Camera, Clip, Node, Nodes, Properties, Scene, Track, __version__, load, load_clip, loads

__all__ = ["Camera", "Clip", "Error", "Finding", "LoadError", "Node", "Nodes", "Properties", "SaveError", "Scene",
           "Track", "__version__", "load", "load_clip", "loads"]

# What follows from their own methods.
for _of, _class, _names in ((MutableMapping, Properties, ("clear", "pop", "popitem", "setdefault", "update")),
                            (Sequence, Nodes, ("__reversed__", "count", "index"))):
    _of.register(_class)
    for _name in _names:
        setattr(_class, _name, getattr(_of, _name))
