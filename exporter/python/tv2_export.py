"""Exports the open scene to .tv2 files.

In MotionBuilder, with the plug-in loaded and the folder of this file on sys.path:

    import tv2_export
    tv2_export.export("C:/out/walk.tv2", fps=60)

Anywhere, with the headless host:

    import tv2_export
    tv2_export.open_scene("walk.bvh")
    files = tv2_export.export("out/walk.tv2")
    print(files, files.rate, files.notes)

export() returns the paths of the files it wrote and raises ExportError for anything else. plan() says beforehand what
export() would do. Works in Python 2.7, which MotionBuilder 2017 has, and in Python 3.

Options and rules come from the module tv2_export_rules beside this file, which the command uses too.

Text may be bytes or unicode; the exporter takes bytes as they are. On Windows unicode is converted to the ANSI code
page, and characters that it lacks are refused. Names of takes always come in the bytes of the scene, so on Windows a
take whose name is not ASCII gives a file whose name is those bytes read in the ANSI code page. Elsewhere unicode is
UTF-8 or what the locale says.
"""

import collections
import ctypes
import numbers
import operator
import os
import struct
import sys
import time

__all__ = ["ExportError", "Files", "Model", "Option", "Plan", "Take", "export", "models", "open_scene", "options",
           "plan", "scene_rate", "take_names", "takes"]

_WINDOWS = os.name == "nt"
_FOLDER = os.path.dirname(os.path.realpath(__file__))
_SUFFIX = u".dll" if _WINDOWS else u".so"
_MODULE = u"tv2_motionbuilder_export_tool" + _SUFFIX
_RULES = u"tv2_export_rules" + _SUFFIX
_HOST = "mobu_host.dll" if _WINDOWS else "libmobu_host.so"

_ENCODING = "mbcs" if _WINDOWS else sys.getfilesystemencoding() or "utf-8"
_ERRORS = "strict" if _WINDOWS or str is bytes else "surrogateescape"

_MAGIC = b"\x01\x32\x56\x54"  # written last: a file that was cut short begins with zeros
_ENVIRONMENT = 2
_CLOCK_STEP = 0.02  # seconds; time stamps of files are no finer


_TEXT, _INT, _SIZE, _DOUBLE, _POINTER = (ctypes.c_char_p, ctypes.c_int32, ctypes.c_size_t, ctypes.c_double,
                                         ctypes.POINTER)


def _record(name, members, doc):
    """A named tuple with a text of help, which named tuples of Python 2 lack."""
    return type(name, (collections.namedtuple(name, members),), {"__slots__": (), "__doc__": doc})


Take = _record("Take", "name start stop start_frame stop_frame current",
               "A take: its span in seconds and in whole transport frames, and whether it is current.")
Model = _record("Model", "name parent selected camera",
                "A model: its long name, the index of its parent (-1: none), whether it is selected and a camera.")
Option = _record("Option", "name default help", "A keyword of export() that is True or False.")
Plan = _record("Plan", "files rate notes",
               "What export() would do: files, samples per second, notes on what is rounded, cut or left out.")


class ExportError(Exception):
    """Why an export was refused, or what went wrong. `written` lists the files that are complete nevertheless; `code`
    names the rule that was violated, None for other causes."""

    def __init__(self, message, written=(), code=None):
        Exception.__init__(self, message)
        self.written = list(written)
        self.code = code


class Files(list):
    """The paths of the files written. `rate` is in samples per second, `notes` say what was rounded or left out."""

    def __init__(self, files, rate, notes):
        list.__init__(self, files)
        self.rate = rate
        self.notes = notes


def export(path, start_frame=None, end_frame=None, fps=None, plugin=None, progress=None, **flags):
    """Exports the selected models, or the whole scene when nothing is selected. Returns the files written, as Files.

    path         ends in ".tv2". All takes go to "<path without .tv2>_<take>.tv2"; a bare ".tv2" as the name of the file
                 stands for "<take>.tv2". No path may have more than 260 bytes.
    start_frame, end_frame
                 in frames of the scene's transport rate, clamped to the take. None is the take's own end.
    fps          samples per second: a number, a Fraction, or the text "30000/1001", "pal" (50), "ntsc" (59.94), "film"
                 (24) or "scene". None is the scene's transport rate. MotionBuilder takes only whole numbers: a
                 fractional rate needs "Custom FPS" in the dialog of the export menu.
    plugin       the module to export with, instead of the one that is loaded or beside this file.
    progress     with the headless host: called now and then as progress(file, part), with part from 0 to 1 for each
                 file. An exception in it stops the export and is passed on, as ctrl-C is; files that were not written
                 by then stay unchanged.
    flags        spaces_to_underscores, keep_positive_z, remove_namespace, disable_constraints and all_takes, each True
                 or False; options() says what they do and what their defaults are.

    Raises ExportError before anything is written for arguments of the wrong type, for a plug-in that cannot be loaded,
    and for whatever violates a rule, with the rule's `code`: a rate out of range, a range outside a take, takes that
    would share a file, a missing folder, a target that is the scene or not a file, and so on. Afterwards it raises
    ExportError when the exporter gave up, or when a file is missing, was not touched or is incomplete. Where a file is
    read-only, the exporter asks; a file that is kept is an error too.
    """
    rules = _check(path, start_frame, end_frame, fps, flags)
    run = _exporter(plugin, rules, progress)

    files = [name for name, _, _, _ in rules.files]
    before = dict((name, _stamp(name)) for name in files)
    _let_the_clock_move_on(before.values())
    reason = run()

    complaints = [(name, _complaint(name, before[name])) for name in files]
    written = [name for name, complaint in complaints if not complaint]
    reasons = ["%s %s" % (name, complaint) for name, complaint in complaints if complaint]
    if reason:
        reasons.insert(0, reason)
    if reasons:
        raise ExportError("; ".join(reasons), written)
    return Files(written, rules.rate, rules.notes)


def plan(path, start_frame=None, end_frame=None, fps=None, **flags):
    """What export() would do with these arguments, as a Plan. Raises ExportError where export() would refuse."""
    rules = _check(path, start_frame, end_frame, fps, flags)
    return Plan([name for name, _, _, _ in rules.files], rules.rate, rules.notes)


def options():
    """The keywords of export() that are True or False, as a list of Option."""
    rules = _load_rules()
    rows = [rules.tv2_rules_option_at(index) for index in range(rules.tv2_rules_option_count())]
    return [Option(_native(row.name), bool(row.default_on), _native(row.help))
            for row in rows if row.is_flag and row.help is not None]


def open_scene(path, take=None, select=(), scene_rate=None):
    """Opens a scene file in the headless host, in place of the scene that was open.

    The take of that name becomes current; without a name the one that was current when an FBX scene was saved, and the
    first of other scenes. The models with these long names are selected. `scene_rate` is the transport rate in frames
    per second; without it the one that the file states or that fits its keys.
    Returns notes on what the file holds and the scene does not, or holds differently. Raises ExportError.
    """
    host = _load_host()
    if host is None:
        raise ExportError("the headless host (%s) is not installed beside %s" % (_HOST, __file__))
    text = ctypes.create_string_buffer(1 << 16)
    if scene_rate is not None and (isinstance(scene_rate, bool) or not isinstance(scene_rate, numbers.Real) or
                                   not 0 < scene_rate <= 1e6):
        raise ExportError("scene_rate is not a rate above 0 and up to 1,000,000: %r" % (scene_rate,))
    if not host.mobu_host_open_scene_at(_encoded(path, "the scene"), float(scene_rate or 0), text, len(text)):
        raise ExportError(_native(text.value))
    if take is not None:
        names = [name for name, _, _ in _HostScene(host).takes()]
        wanted = _encoded(take, "the take")
        if wanted not in names:
            raise ExportError("there is no take %s%s" %
                              (_shown(wanted), _suggestion(host.mobu_host_suggest_take, wanted) or
                               "; the scene has " + ", ".join(_shown(name) for name in names)))
        host.mobu_host_choose_take(names.index(wanted))
    for model in [select] if isinstance(select, (bytes, type(u""))) else select:
        wanted = _encoded(model, "the model")
        if not host.mobu_host_select_model(wanted):
            raise ExportError("there is no model %s%s" %
                              (_shown(wanted), _suggestion(host.mobu_host_suggest_model, wanted)))
    return [line for line in _native(text.value).split("\n") if line]


def _suggestion(suggest, unknown):
    text = ctypes.create_string_buffer(1 << 12)
    suggest(unknown, text, len(text))
    return _native(text.value)


def take_names():
    """The names of the takes, in the order of the scene; None where neither MotionBuilder nor the host is there."""
    scene = _scene()
    return None if scene is None else [_native(name) for name, _, _ in scene.takes()]


def takes():
    """The takes of the open scene, as a list of Take."""
    scene, rules = _known_scene(), _load_rules()
    rate, current = scene.rate(), scene.current_take()
    return [Take(_native(name), start, stop, rules.tv2_rules_frame_at(start, rate),
                 rules.tv2_rules_frame_at(stop, rate), index == current)
            for index, (name, start, stop) in enumerate(scene.takes())]


def models():
    """The models of the open scene in pre-order, the scene's root first, as a list of Model."""
    return [Model(_native(name), parent, selected, camera)
            for name, parent, selected, camera in _known_scene().models()]


def scene_rate():
    """The transport rate of the open scene, in frames per second."""
    return _known_scene().rate()


# ---- arguments


def _encoded(text, what):
    """The bytes of a text."""
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
        raise ExportError("%s is not text: %r" % (what, text))
    if b"\0" in encoded:
        raise ExportError("%s %r has a zero byte" % (what, text))
    return encoded


def _native(encoded):
    """These bytes as str, the text of this version of Python."""
    return encoded if str is bytes else encoded.decode(_ENCODING, "replace" if _WINDOWS else _ERRORS)


def _shown(encoded):
    return '"%s"' % _native(encoded)


def _frame(name, value):
    """A frame as the rules take it, None for none."""
    try:
        number = None if isinstance(value, bool) else operator.index(value)
    except TypeError:
        number = None
    if value is not None and (number is None or not -2**31 <= number < 2**31):
        raise ExportError("%s is not a 32-bit integer: %r" % (name, value))
    return None if value is None else ctypes.pointer(_INT(number))


def _flags(given):
    """The flags with their defaults, in the order of options()."""
    known = options()
    unknown = set(given) - set(option.name for option in known)
    if unknown:
        raise TypeError("export() got an unexpected keyword argument %r" % sorted(unknown)[0])
    flags = collections.OrderedDict((option.name, given.get(option.name, option.default)) for option in known)
    for name, value in flags.items():
        if not isinstance(value, bool):
            raise ExportError("%s is neither True nor False: %r" % (name, value))
    return flags


def _rate_text(fps):
    """The rate as the rules read it."""
    if fps is None:
        return b"scene"
    if isinstance(fps, (bytes, type(u""))):
        return _encoded(fps, "fps")
    if isinstance(fps, numbers.Real) and not isinstance(fps, bool):
        if isinstance(fps, numbers.Rational):
            return ("%d/%d" % (fps.numerator, fps.denominator) if fps.denominator != 1 else "%d" % fps).encode("ascii")
        return repr(float(fps)).encode("ascii")
    raise ExportError("fps is not a rate: %r" % (fps,))


# ---- the scene


class _HostScene(object):
    """What is open in the headless host. Names are bytes, times are in seconds."""

    def __init__(self, host):
        self._host = host
        self._text = ctypes.create_string_buffer(1 << 16)

    def takes(self):
        found = []
        start, stop = ctypes.c_double(), ctypes.c_double()
        for take in range(self._host.mobu_host_take_count()):
            self._host.mobu_host_take_name(take, self._text, len(self._text))
            self._host.mobu_host_take_span(take, start, stop)
            found.append((self._text.value, start.value, stop.value))
        return found

    def current_take(self):
        return self._host.mobu_host_current_take()

    def rate(self):
        return self._host.mobu_host_transport_rate()

    def models(self):
        found = []
        model = _Model()
        for index in range(self._host.mobu_host_model_count()):
            self._host.mobu_host_model_at(index, model)
            self._host.mobu_host_model_name(index, self._text, len(self._text))
            found.append((self._text.value, model.parent, bool(model.selected), bool(model.camera)))
        return found

    def files(self):
        found = []
        for index in range(self._host.mobu_host_scene_file_count()):
            self._host.mobu_host_scene_file(index, self._text, len(self._text))
            found.append(self._text.value)
        return found


class _MotionBuilderScene(object):
    """What is open in MotionBuilder."""

    def __init__(self, pyfbsdk):
        self._sdk = pyfbsdk
        self._system = pyfbsdk.FBSystem()

    def takes(self):
        spans = [(take, take.LocalTimeSpan) for take in self._system.Scene.Takes]
        return [(_encoded(take.Name, "the take"), span.GetStart().GetSecondDouble(), span.GetStop().GetSecondDouble())
                for take, span in spans]

    def current_take(self):
        current = self._system.CurrentTake
        names = [name for name, _, _ in self.takes()]  # names of takes are unique there
        return -1 if current is None else names.index(_encoded(current.Name, "the take"))

    def rate(self):
        return self._sdk.FBPlayerControl().GetTransportFpsValue()

    def models(self):
        found = []
        waiting = [(self._system.Scene.RootModel, -1)]
        while waiting:
            model, parent = waiting.pop()
            camera = isinstance(model, self._sdk.FBCamera)
            children = list(model.Children)
            waiting.extend((child, len(found)) for child in reversed(children))
            found.append((_encoded(model.LongName, "the model"), parent, bool(model.Selected), camera))
        return found

    def files(self):
        name = self._sdk.FBApplication().FBXFileName
        return [_encoded(name, "the scene")] if name else []


def _scene():
    """The scene of MotionBuilder or of the headless host; None where there is neither."""
    try:
        import pyfbsdk
    except ImportError:
        host = _load_host()
        return None if host is None else _HostScene(host)
    return _MotionBuilderScene(pyfbsdk)


def _known_scene():
    scene = _scene()
    if scene is None:
        raise ExportError("neither MotionBuilder (pyfbsdk) nor the headless host is available to ask about the scene")
    return scene


# ---- the rules


def _structure(name, members):
    return type(name, (ctypes.Structure,), {"_fields_": members})


_RulesTake = _structure("_RulesTake", [("name", _TEXT), ("start", _DOUBLE), ("stop", _DOUBLE)])
_Model = _structure("_Model", [("parent", _INT), ("selected", _INT), ("camera", _INT)])  # of rules and host
_RulesRequest = _structure("_RulesRequest", [
    ("size", _SIZE), ("path", _TEXT), ("rate", _TEXT), ("start_frame", _POINTER(_INT)), ("end_frame", _POINTER(_INT)),
    ("all_takes", _INT), ("spaces_to_underscores", _INT), ("whole_rates_only", _INT), ("python_wording", _INT),
    ("file_names", _INT), ("has_scene", _INT), ("transport_rate", _DOUBLE), ("takes", _POINTER(_RulesTake)),
    ("take_count", _SIZE), ("current_take", _INT), ("models", _POINTER(_Model)), ("model_count", _SIZE),
    ("files", _POINTER(_TEXT)), ("file_count", _SIZE)])
_RulesResult = _structure("_RulesResult", [
    ("objection", _TEXT), ("code", _TEXT), ("rate", _DOUBLE), ("path", _TEXT), ("start_frame", _INT),
    ("end_frame", _INT), ("whole_take", _INT), ("file_count", _SIZE), ("note_count", _SIZE)])
_RulesFile = _structure("_RulesFile", [("path", _TEXT), ("take", _SIZE), ("start", _DOUBLE), ("end", _DOUBLE)])
_RulesOption = _structure("_RulesOption", [("name", _TEXT), ("help", _TEXT), ("is_flag", _INT), ("default_on", _INT)])

# The result and the arguments of each function.
_RULES_FUNCTIONS = {
    "tv2_rules_check": (ctypes.c_void_p, _POINTER(_RulesRequest)),
    "tv2_rules_free": (None, ctypes.c_void_p),
    "tv2_rules_result_of": (_RulesResult, ctypes.c_void_p),
    "tv2_rules_file_at": (_RulesFile, ctypes.c_void_p, _SIZE),
    "tv2_rules_note": (_TEXT, ctypes.c_void_p, _SIZE),
    "tv2_rules_frame_at": (_INT, _DOUBLE, _DOUBLE),
    "tv2_rules_option_count": (_SIZE,),
    "tv2_rules_option_at": (_RulesOption, _SIZE),
    "tv2_rules_script_entry": (_TEXT,),
}

# What the rules say: arguments of the exporter, and (name, take, start, end) of each file.
_Checked = collections.namedtuple(
    "_Checked", "path path_for_host start_frame end_frame whole_take flags rate files notes")


def _declare(library, functions):
    for name, types in functions.items():
        function = getattr(library, name)
        function.restype, function.argtypes = types[0], types[1:]
    return library


def _load_rules():
    path = os.path.join(_FOLDER, _RULES)
    if not os.path.exists(path):
        raise ExportError("the rules are not installed: there is no %s" % path)
    try:
        rules = ctypes.CDLL(path)
    except OSError as error:
        raise ExportError("the rules cannot be loaded: %s" % error)
    return _declare(rules, _RULES_FUNCTIONS)


def _check(path, start_frame, end_frame, fps, given_flags):
    """What the rules say about an export of the open scene; raises ExportError for what they refuse."""
    path, flags = _encoded(path, "the path"), _flags(given_flags)
    start, end, rate = _frame("start_frame", start_frame), _frame("end_frame", end_frame), _rate_text(fps)
    rules = _load_rules()
    scene = _known_scene()
    found_takes, found_models, files = scene.takes(), scene.models(), scene.files()
    request = _RulesRequest(
        size=ctypes.sizeof(_RulesRequest), path=path, rate=rate, start_frame=start, end_frame=end,
        all_takes=flags["all_takes"], spaces_to_underscores=flags["spaces_to_underscores"], python_wording=1,
        whole_rates_only=isinstance(scene, _MotionBuilderScene), has_scene=1, transport_rate=scene.rate(),
        takes=(_RulesTake * len(found_takes))(*found_takes), take_count=len(found_takes),
        current_take=scene.current_take(),
        models=(_Model * len(found_models))(*[model[1:] for model in found_models]), model_count=len(found_models),
        files=(_TEXT * len(files))(*files), file_count=len(files))
    plan = rules.tv2_rules_check(request)
    if not plan:
        raise ExportError("the rules cannot be applied: %s is of another version, or memory ran out" % _RULES)
    try:
        result = rules.tv2_rules_result_of(plan)
        if result.objection is not None:
            raise ExportError(_native(result.objection), code=_native(result.code))
        planned = [rules.tv2_rules_file_at(plan, index) for index in range(result.file_count)]
        return _Checked(path, result.path, result.start_frame, result.end_frame, bool(result.whole_take),
                        list(flags.values()), result.rate,
                        [(_native(file.path), file.take, file.start, file.end) for file in planned],
                        [_native(rules.tv2_rules_note(plan, index)) for index in range(result.note_count)])
    finally:
        rules.tv2_rules_free(plan)


# ---- the plug-in


def _exporter(plugin, rules, progress):
    """The function that exports; it returns what went wrong, or an empty text."""
    if isinstance(_known_scene(), _HostScene):
        return lambda: _run_in_host(_plugin_path(plugin), rules, progress)
    if progress is not None:
        raise ExportError("progress works with the headless host alone")
    entry = _load_entry(plugin)

    def run():
        arguments = rules.flags[:-1] + [rules.whole_take] + rules.flags[-1:]  # all takes come last
        done = entry(rules.path, rules.start_frame, rules.end_frame, int(rules.rate), *arguments)
        return "" if done == 1 else "the exporter gave up"

    return run


def _host_call(plugin, rules):
    """The call of mobu_host_export; its last members are the flags."""
    call = _structure("_HostCall", [
        ("size", _SIZE), ("plugin", _TEXT), ("path", _TEXT), ("rate", _DOUBLE), ("whole_take", _INT),
        ("start_frame", _INT), ("end_frame", _INT), ("flags", _INT * len(rules.flags))])
    return call(ctypes.sizeof(call), plugin, rules.path_for_host, rules.rate, rules.whole_take, rules.start_frame,
                rules.end_frame, tuple(rules.flags))


_HostProgress = ctypes.PYFUNCTYPE(ctypes.c_int, ctypes.c_int, ctypes.c_double, ctypes.c_void_p)
_HOST_FUNCTIONS = {
    "mobu_host_open_scene_at": (_INT, _TEXT, _DOUBLE, _TEXT, _SIZE),
    "mobu_host_take_name": (_INT, _INT, _TEXT, _SIZE),
    "mobu_host_take_span": (_INT, _INT, _POINTER(_DOUBLE), _POINTER(_DOUBLE)),
    "mobu_host_transport_rate": (_DOUBLE,),
    "mobu_host_scene_file": (_INT, _INT, _TEXT, _SIZE),
    "mobu_host_model_at": (_INT, _INT, _POINTER(_Model)),
    "mobu_host_model_name": (_INT, _INT, _TEXT, _SIZE),
    "mobu_host_select_model": (_INT, _TEXT),
    "mobu_host_suggest_take": (None, _TEXT, _TEXT, _SIZE),
    "mobu_host_suggest_model": (None, _TEXT, _TEXT, _SIZE),
    "mobu_host_export": (_INT, ctypes.c_void_p, _HostProgress, ctypes.c_void_p, _TEXT, _SIZE),
}


def _run_in_host(plugin, rules, progress):
    raised = []
    spans = dict((take, (name, start, end)) for name, take, start, end in rules.files)

    def report(take, seconds, _):
        """Called during the export. Ctrl-C arrives here, where Python code runs."""
        try:
            if progress is not None and take in spans:
                name, start, end = spans[take]
                progress(name, min(max((seconds - start) / (end - start), 0.0), 1.0) if end > start else 1.0)
        except BaseException:  # anything stops the export and is passed to the caller
            raised.append(sys.exc_info())
        return not raised

    call = _host_call(plugin, rules)
    text = ctypes.create_string_buffer(1 << 12)
    done = _load_host().mobu_host_export(ctypes.byref(call), _HostProgress(report), None, text, len(text))
    if raised:
        raise raised[0][1]
    if done < 0:
        raise KeyboardInterrupt()  # it came before report could catch it
    return "" if done == 1 else _native(text.value) or "the exporter gave up"


def _plugin_path(plugin):
    path = os.path.abspath(_native(_encoded(plugin or os.path.join(_FOLDER, _MODULE), "the plug-in")))
    if not os.path.exists(path):
        raise ExportError("the plug-in is not loaded: there is no %s" % path)
    return _encoded(path, "the plug-in")


def _load_entry(plugin):
    """The script entry of the plug-in that MotionBuilder has loaded, or of another one."""
    name = _native(_load_rules().tv2_rules_script_entry())
    handle = _loaded_module(_MODULE) if plugin is None else None
    plugin = _MODULE if handle else _native(_plugin_path(plugin))
    try:
        # PyDLL keeps the interpreter locked: two threads cannot work on the scene.
        entry = getattr(ctypes.PyDLL(plugin, handle=handle), name)
    except OSError as error:
        raise ExportError("the plug-in %s cannot be loaded: %s" % (plugin, error))
    except AttributeError:
        raise ExportError("%s is no exporter: it has no %s" % (plugin, name))
    entry.argtypes = [_TEXT] + [_INT] * 3 + [ctypes.c_bool] * 6
    entry.restype = ctypes.c_uint32
    return entry


def _loaded_module(name):
    """The handle of a module that the application has loaded; None on systems that cannot find it by name."""
    if not _WINDOWS:
        return None
    find = ctypes.WinDLL("kernel32").GetModuleHandleW
    find.restype, find.argtypes = ctypes.c_void_p, [ctypes.c_wchar_p]
    return find(name)


def _load_host():
    """The library of the headless host, or None."""
    above = os.path.dirname(_FOLDER)
    for folder in (_FOLDER, above, os.path.join(os.path.dirname(above), "bin")):  # the last one under Windows
        path = os.path.join(folder, _HOST)
        if os.path.exists(path):
            try:
                host = ctypes.PyDLL(path)
            except OSError as error:
                raise ExportError("the headless host cannot be loaded: %s" % error)
            return _declare(host, _HOST_FUNCTIONS)
    return None


# ---- the files


def _stamp(path):
    """What changes when a file is written; None when there is no file."""
    try:
        status = os.stat(path)
    except OSError:
        return None
    return status.st_mtime, status.st_size, status.st_ino


def _let_the_clock_move_on(stamps):
    """Waits until the time stamp of a file written now differs from that of a file written before."""
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
        return "was not written, the old file was kept" if writable else "is read-only and was kept"
    try:
        with open(path, "rb") as stream:
            if stream.read(len(_MAGIC)) != _MAGIC:
                return "is incomplete, its writing failed"
            start, end = _time_range(stream)
    except (IOError, OSError, struct.error) as error:
        return "cannot be read back: %s" % error
    return "" if start <= end else "has no range: %g to %g s, the frames are outside the take" % (start, end)


def _time_range(stream):
    """The start and end of the file in seconds, from its environment chunk. The stream is after the magic."""
    while True:
        size, chunk = struct.unpack("<II", stream.read(8))
        if chunk == _ENVIRONMENT:
            return struct.unpack("<ff", stream.read(8))
        stream.seek(max(size - 8, 0), os.SEEK_CUR)
