"""Exports the open scene to .tv2 files.

In MotionBuilder, with the plug-in loaded and the folder of this file on sys.path:

    import tv2_export
    tv2_export.export("C:/out/walk.tv2")

Anywhere, with the headless host:

    import tv2_export
    tv2_export.open_scene("walk.bvh")
    tv2_export.export("out/walk.tv2", fps=60)

export() returns the paths of the files it wrote and raises ExportError for anything else. Runs in Python 2.7, which
MotionBuilder 2017 has, and in Python 3.

Text may be given as bytes or as unicode; the exporter takes bytes as they are. On Windows unicode goes through the
ANSI code page, and what has no place in it is refused. The name of a take always comes in the bytes of the scene, so
on Windows a take whose name is not ASCII gives a file whose name is those bytes read in the ANSI code page. Elsewhere
unicode is UTF-8 or what the locale says.
"""

import ctypes
import operator
import os
import struct
import sys
import time

__all__ = ["ExportError", "export", "open_scene", "take_names"]

_WINDOWS = os.name == "nt"
_FOLDER = os.path.dirname(os.path.abspath(__file__))
_MODULE = u"tv2_motionbuilder_export_tool" + (u".dll" if _WINDOWS else u".so")
_HOST = "mobu_host.dll" if _WINDOWS else "libmobu_host.so"
_ENTRY = "python_export_tv2"

_ENCODING = "mbcs" if _WINDOWS else sys.getfilesystemencoding() or "utf-8"
_ERRORS = "strict" if _WINDOWS or str is bytes else "surrogateescape"

_MAGIC = b"\x01\x32\x56\x54"  # written last: a file that was cut short begins with zeros
_ENVIRONMENT = 2
_EXTENSION = b".tv2"
_MOST_PATH_BYTES = 260
_INT32_MIN, _INT32_MAX = -2**31, 2**31 - 1
_CLOCK_STEP = 0.02  # seconds; time stamps of files are no finer


class ExportError(Exception):
    """Why an export was refused, or what went wrong. `written` lists the files that are whole all the same."""

    def __init__(self, message, written=()):
        Exception.__init__(self, message)
        self.written = list(written)


def export(path, start_frame=None, end_frame=None, fps=50, spaces_to_underscores=True, keep_positive_z=True,
           remove_namespace=True, disable_constraints=False, all_takes=False, plugin=None):
    """Exports the selected models, or the whole scene when nothing is selected. Returns the files written.

    path                   ends in ".tv2". All takes go to "<path without .tv2>_<take>.tv2"; a bare ".tv2" as the name
                           of the file stands for "<take>.tv2". No path may have more than 260 bytes.
    start_frame, end_frame in frames of the scene's transport rate, held to the take. None is the take's own end.
    fps                    samples a second, a whole number.
    spaces_to_underscores  in the names of the files, not of their folder.
    keep_positive_z        half a turn about Y on the whole hierarchy.
    remove_namespace       "ns:Hips" becomes "Hips".
    disable_constraints    constraints are inactive while sampling.
    all_takes              a file for every take instead of the current one alone.
    plugin                 the module to export with instead of the one that is loaded or beside this file.

    Raises ExportError before anything is written for arguments of the wrong type, a rate of 0 or less, a start after
    the end, a missing folder, takes that no file can be named after or that would share one, and a plug-in that cannot
    be loaded; afterwards when the exporter gave up, when a file is missing, was not touched or is incomplete, or when
    the frames turned out to lie outside a take. Where a file is read-only, the exporter asks; a file that is kept is an
    error too.
    """
    path = _encoded(path, "the path")
    if not path.endswith(_EXTENSION):
        raise ExportError("the path %s does not end in .tv2" % _shown(path))
    folder = os.path.dirname(_native(path))
    if folder and not os.path.isdir(folder):
        raise ExportError("there is no folder %s" % folder)
    flags = [_flag("spaces_to_underscores", spaces_to_underscores), _flag("keep_positive_z", keep_positive_z),
             _flag("remove_namespace", remove_namespace), _flag("disable_constraints", disable_constraints),
             start_frame is None and end_frame is None, _flag("all_takes", all_takes)]
    start = _INT32_MIN if start_frame is None else _int32("start_frame", start_frame)
    end = _INT32_MAX if end_frame is None else _int32("end_frame", end_frame)
    if start > end:
        raise ExportError("the start frame %d is after the end frame %d" % (start, end))
    fps = _int32("fps", fps)
    if fps <= 0:
        raise ExportError("a rate of %d samples a second exports nothing" % fps)
    entry = _load_entry(plugin)

    files = _output_files(path, all_takes, spaces_to_underscores)
    before = dict((name, _stamp(name)) for name in files)
    _let_the_clock_move_on(before.values())
    result = entry(path, start, end, fps, *flags)

    complaints = [(name, _complaint(name, before[name])) for name in files]
    written = [name for name, complaint in complaints if not complaint]
    reasons = ["%s %s" % (name, complaint) for name, complaint in complaints if complaint]
    if result != 1:
        reasons.insert(0, "the exporter gave up")
    if reasons:
        raise ExportError("; ".join(reasons), written)
    return written


def open_scene(path, take=None, select=()):
    """Opens a scene file (FBX, BVH, glTF, Collada) in the headless host, in place of the scene that was open.

    The take of that name is then current; without a name the one that was open when an FBX scene was saved, and the
    first of other scenes. The models of these long names are selected.
    Returns what the file holds and the scene does not, or holds differently, a line each. Raises ExportError.
    """
    host = _load_host()
    if host is None:
        raise ExportError("the headless host (%s) is not installed beside %s" % (_HOST, __file__))
    text = ctypes.create_string_buffer(1 << 16)
    if not host.mobu_host_open_scene(_encoded(path, "the scene"), text, len(text)):
        raise ExportError(_native(text.value))
    if take is not None:
        names = _host_takes(host)
        wanted = _encoded(take, "the take")
        if wanted not in names:
            raise ExportError("there is no take %s; the scene has %s" %
                              (_shown(wanted), ", ".join(_shown(name) for name in names)))
        host.mobu_host_choose_take(names.index(wanted))
    for model in [select] if isinstance(select, (bytes, type(u""))) else select:
        if not host.mobu_host_select_model(_encoded(model, "the model")):
            raise ExportError("there is no model %s" % _shown(_encoded(model, "the model")))
    return [line for line in _native(text.value).split("\n") if line]


def take_names():
    """The names of the takes, in the order of the scene; None where neither MotionBuilder nor the host is there."""
    takes = _takes(True)
    return None if takes is None else [_native(take) for take in takes]


# ---- arguments


def _encoded(text, what):
    """The bytes that stand for a text."""
    if hasattr(text, "__fspath__"):
        text = text.__fspath__()
    if isinstance(text, type(u"")):
        try:
            encoded = text.encode(_ENCODING, _ERRORS)
            lost = encoded.decode(_ENCODING, _ERRORS) != text  # Python 2 puts "?" for what the code page lacks
        except UnicodeError:
            lost = True
        if lost:
            raise ExportError("%s %r has characters that %s lacks" % (what, text, _ENCODING))
    elif isinstance(text, bytes):
        encoded = text
    else:
        raise ExportError("%s is no text but %r" % (what, text))
    if b"\0" in encoded:
        raise ExportError("%s %r holds a zero byte" % (what, text))
    return encoded


def _native(encoded):
    """The text of Python's own kind, str, that stands for these bytes."""
    return encoded if str is bytes else encoded.decode(_ENCODING, "replace" if _WINDOWS else _ERRORS)


def _shown(encoded):
    return '"%s"' % _native(encoded)


def _int32(name, value):
    try:
        number = None if isinstance(value, bool) else operator.index(value)
    except TypeError:
        number = None
    if number is None or not _INT32_MIN <= number <= _INT32_MAX:
        raise ExportError("%s is no whole number of 32 bits: %r" % (name, value))
    return number


def _flag(name, value):
    if not isinstance(value, bool):
        raise ExportError("%s is neither True nor False: %r" % (name, value))
    return value


# ---- the plug-in and the scene


def _load_entry(plugin):
    handle = _loaded_module(_MODULE) if plugin is None else None
    if handle:
        plugin = _MODULE
    else:
        plugin = os.path.abspath(_native(_encoded(plugin or os.path.join(_FOLDER, _MODULE), "the plug-in")))
        if not os.path.exists(plugin):
            raise ExportError("the plug-in is not loaded: there is no %s" % plugin)
    try:
        # Python stays locked during the call: the scene is nothing for two threads.
        entry = getattr(ctypes.PyDLL(plugin, handle=handle), _ENTRY)
    except OSError as error:
        raise ExportError("the plug-in %s cannot be loaded: %s" % (plugin, error))
    except AttributeError:
        raise ExportError("%s is no exporter: it has no %s" % (plugin, _ENTRY))
    entry.argtypes = [ctypes.c_char_p] + [ctypes.c_int32] * 3 + [ctypes.c_bool] * 6
    entry.restype = ctypes.c_uint32
    return entry


def _loaded_module(name):
    """The handle of a module that the application has loaded; None on systems where a name does not tell."""
    if not _WINDOWS:
        return None
    find = ctypes.WinDLL("kernel32").GetModuleHandleW
    find.argtypes = [ctypes.c_wchar_p]
    find.restype = ctypes.c_void_p
    return find(name)


def _load_host():
    """The library of the headless host, or None."""
    for folder in (_FOLDER, os.path.dirname(_FOLDER)):
        path = os.path.join(folder, _HOST)
        if os.path.exists(path):
            try:
                host = ctypes.PyDLL(path)
            except OSError as error:
                raise ExportError("the headless host cannot be loaded: %s" % error)
            host.mobu_host_open_scene.argtypes = [ctypes.c_char_p, ctypes.c_char_p, ctypes.c_size_t]
            host.mobu_host_take_name.argtypes = [ctypes.c_int, ctypes.c_char_p, ctypes.c_size_t]
            host.mobu_host_select_model.argtypes = [ctypes.c_char_p]
            return host
    return None


def _host_takes(host):
    names = []
    text = ctypes.create_string_buffer(1 << 16)
    for take in range(host.mobu_host_take_count()):
        host.mobu_host_take_name(take, text, len(text))
        names.append(text.value)
    return names


def _takes(all_takes):
    """The names of all takes, or that of the current one alone, as bytes; None when nobody knows them."""
    try:
        from pyfbsdk import FBSystem
    except ImportError:
        host = _load_host()
        if host is None:
            return None
        names = _host_takes(host)
        current = host.mobu_host_current_take()
        return names if all_takes else names[current:current + 1] if current >= 0 else []
    system = FBSystem()
    takes = list(system.Scene.Takes) if all_takes else [system.CurrentTake]
    return [take.Name if isinstance(take.Name, bytes) else take.Name.encode("utf-8") for take in takes if take]


# ---- the files


def _output_files(path, all_takes, spaces_to_underscores):
    """The files that the exporter is going to write."""
    cut = max(path.rfind(b"/"), path.rfind(b"\\")) + 1
    folder, stem = path[:cut], path[cut:-len(_EXTENSION)]
    named_after_take = all_takes or not stem
    takes = _takes(all_takes)
    if takes is None:
        if named_after_take:
            raise ExportError("neither MotionBuilder (pyfbsdk) nor the headless host is there to tell the takes")
        takes = [b""]
    files = []
    for take in takes:
        if named_after_take and (not take or b"/" in take or b"\\" in take):
            raise ExportError("no file can be named after take %s" % _shown(take))
        name = (stem + b"_" + take if all_takes and stem else stem or take) + _EXTENSION
        name = folder + (name.replace(b" ", b"_") if spaces_to_underscores else name)
        if len(name) > _MOST_PATH_BYTES:
            raise ExportError("the path %s has %d bytes; at most %d can be written to" %
                              (_shown(name), len(name), _MOST_PATH_BYTES))
        if name in files:
            raise ExportError("takes %s and %s would both be written to %s" %
                              (_shown(takes[files.index(name)]), _shown(take), _shown(name)))
        files.append(name)
    if not files:
        raise ExportError("no take is current")
    return [_native(name) for name in files]


def _stamp(path):
    """What changes when a file is written; None when there is no file."""
    try:
        status = os.stat(path)
    except OSError:
        return None
    return status.st_mtime, status.st_size, status.st_ino


def _let_the_clock_move_on(stamps):
    """A file that was written just now could not be told from one that is written next."""
    newest = max([stamp[0] for stamp in stamps if stamp] or [0])
    while abs(time.time() - newest) < _CLOCK_STEP:
        time.sleep(_CLOCK_STEP)


def _complaint(path, before):
    """Why the file is not what the export should have written; empty when it is."""
    now = _stamp(path)
    if now is None:
        return "was not written"
    if now == before:
        writable = os.stat(path).st_mode & 0o222
        return "was not written, what stands there is older" if writable else "is read-only and was kept"
    try:
        with open(path, "rb") as stream:
            if stream.read(len(_MAGIC)) != _MAGIC:
                return "is incomplete, its writing failed"
            start, end = _time_range(stream)
    except (IOError, OSError, struct.error) as error:
        return "cannot be read back: %s" % error
    return "" if start <= end else "is of no use: %g to %g s, the frames are outside the take" % (start, end)


def _time_range(stream):
    """The seconds where the file starts and ends: the first that its environment holds. Stands behind the magic."""
    while True:
        size, chunk = struct.unpack("<II", stream.read(8))
        if chunk == _ENVIRONMENT:
            return struct.unpack("<ff", stream.read(8))
        stream.seek(max(size - 8, 0), os.SEEK_CUR)
