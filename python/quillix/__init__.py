"""Quillix's cores and offline host on NumPy arrays.

Every function behaves exactly as the node or core it exposes (named in its docstring); the
arrays it takes follow one contract:

* positions are ``(N, 3)`` float32, matrices ``(4, 4)`` or ``(N, 4, 4)`` float32 in the
  row-vector convention (row 3 is the translation), indices int32, masks bool;
* an argument that already has that dtype and is C-contiguous is used in place; any other
  real (or, for indices, integer) input is converted once;
* a wrong shape raises ValueError, a dtype that cannot stand for the wanted one TypeError,
  both naming the argument; kernel failures raise :class:`KernelError`.

Long calls release the GIL. See docs/python.md for a tour.
"""

import json as _json
import math as _math
import os as _os
import re as _re
import tempfile as _tempfile

import numpy as _np

from ._quillix import _Host
from ._quillix import (
    KernelError,
    MATCH_WEIGHT_NAMES,
    Mesh,
    ObjectFeatures,
    TransformParts,
    boxes_contact_time,
    boxes_intersect,
    chain_path,
    ellipsoid_distance,
    find_matching_scores,
    join_strings,
    levenshtein_distance,
    number_text,
    pack_string,
    read_mesh,
    resample_polyline,
    simplify_polyline,
    spheres_along_spline,
    status_message,
    to_text,
    vertex_path,
    vertex_paths,
)

__all__ = [
    "Host",
    "KernelError",
    "MATCH_WEIGHT_NAMES",
    "Mesh",
    "ObjectFeatures",
    "TransformParts",
    "boxes_contact_time",
    "boxes_intersect",
    "chain_path",
    "ellipsoid_distance",
    "find_matching_scores",
    "join_strings",
    "levenshtein_distance",
    "number_text",
    "pack_string",
    "read_mesh",
    "resample_polyline",
    "simplify_polyline",
    "spheres_along_spline",
    "status_message",
    "to_text",
    "vertex_path",
    "vertex_paths",
]


_FLOAT_BITS = _re.compile(r"^0x[0-9A-Fa-f]{8}$")


def _float_bits(value):
    """A non-finite float as the request format spells it: the float32's bits."""
    return "0x%08X" % int(_np.array(value, dtype=_np.float32).view(_np.uint32))


def _plain(value):
    """Request data with NumPy arrays and scalars turned into JSON values."""
    if isinstance(value, dict):
        return {str(key): _plain(item) for key, item in value.items()}
    if isinstance(value, (list, tuple)):
        return [_plain(item) for item in value]
    if isinstance(value, _np.ndarray):
        return _plain(value.tolist())
    if isinstance(value, _np.generic):
        return _plain(value.item())
    if isinstance(value, float) and not _math.isfinite(value):
        return _float_bits(value)
    return value


def _absolute_mesh_files(document):
    """Takes the relative mesh files of bound inputs ({"from": {"meshFile": ...}}) from the
    working directory, as "scene" is, rather than from the request's temporary file."""
    requests = document.get("requests")
    for entry in requests if isinstance(requests, list) else []:
        if not isinstance(entry, dict):
            continue
        instances = entry.get("instances")
        groups = [entry.get("inputs")] + (instances if isinstance(instances, list) else [])
        for inputs in (group for group in groups if isinstance(group, dict)):
            for value in inputs.values():
                source = value.get("from") if isinstance(value, dict) else None
                path = source.get("meshFile") if isinstance(source, dict) else None
                if isinstance(path, (str, _os.PathLike)):
                    source["meshFile"] = _os.path.abspath(_os.fspath(path))


def _leaves(value):
    if isinstance(value, list):
        for item in value:
            yield from _leaves(item)
    elif value is not None:
        yield value


def _numeric_dtype(values):
    """The dtype of an output's values, or None for text (and for outputs without values)."""
    kinds = {type(leaf) for leaf in _leaves(values)}
    if not kinds:
        return None
    if kinds == {bool}:
        return _np.bool_
    if kinds == {int}:
        return _np.int32
    if kinds <= {int, float, str} and all(
        not isinstance(leaf, str) or _FLOAT_BITS.match(leaf) for leaf in _leaves(values)
    ):
        return _np.float32
    return None


def _to_array(value, dtype):
    if dtype is _np.float32:
        value = _decode_bits(value)
    return _np.array(value, dtype=dtype)


def _decode_bits(value):
    if isinstance(value, list):
        return [_decode_bits(item) for item in value]
    if isinstance(value, str):
        return _np.array(int(value, 16), dtype=_np.uint32).view(_np.float32)[()]
    return value


def _output_arrays(values):
    """One output's per-element values as NumPy: one array when every element has a value of
    the same shape, otherwise a list of arrays (None where the node wrote nothing)."""
    dtype = _numeric_dtype(values)
    if dtype is None:
        return values
    if all(item is not None for item in values):
        try:
            return _to_array(values, dtype)
        except ValueError:
            pass  # elements of different lengths
    return [None if item is None else _to_array(item, dtype) for item in values]


class Host:
    """The offline host: loads the plug-in as ``quillix`` does (``plugin`` defaults to the
    package's own copy, or the build tree's) and runs its nodes and commands.

    Only one Host should exist at a time: the host's log and scene are process-wide.
    """

    def __init__(self, plugin=None):
        self._host = _Host(None if plugin is None else _os.fspath(plugin))
        #: What the plug-in logged while loading, as [[severity, text], ...].
        self.load_log = _json.loads(self._host.load_log_json)

    @property
    def plugin_path(self):
        return self._host.plugin_path

    def nodes(self):
        """What ``quillix list --json`` shows: {"plugin", "commands", "nodes"}."""
        return _json.loads(self._host.nodes_json())

    def eval(self, request, threads=None, batch_size=None, arrays=True):
        """Evaluates requests as ``quillix eval`` does and returns its result document.

        request: one request dictionary, a list of them, or a whole request document
        ({"requests": [...], "scene": ...}); NumPy arrays and scalars are accepted anywhere a
        value or a list of values is. A relative "scene", and a relative "meshFile" of an input
        bound to a mesh file, is taken from the working directory.
        Named instances keep their state from one request to the next, across calls, until
        ``close``, which returns what their Term logged. Returns {"results", "shutdownLog"} as
        the tool prints them (the shutdown log of the named instances comes with ``close``
        instead, since they outlive the call), except that with
        ``arrays`` every numeric output's "values" become NumPy arrays (float32, int32 or
        bool; NaN and infinities decoded from their bit strings). Bad input raises ValueError
        with the tool's message.
        """
        if isinstance(request, dict) and "requests" in request:
            document = dict(request)
        elif isinstance(request, dict):
            document = {"requests": [request]}
        else:
            document = {"requests": list(request)}
        if isinstance(document.get("scene"), (str, _os.PathLike)):
            document["scene"] = _os.path.abspath(_os.fspath(document["scene"]))
        document = _plain(document)
        _absolute_mesh_files(document)
        text = _json.dumps(document)
        with _tempfile.NamedTemporaryFile("w", suffix=".json", encoding="utf-8") as file:
            file.write(text)
            file.flush()
            result = _json.loads(
                self._host.eval_file(file.name, threads or 0, batch_size or 0)
            )
        if arrays:
            for entry in result["results"]:
                for output in entry["outputs"]:
                    output["values"] = _output_arrays(output["values"])
        return result

    def load_scene(self, path):
        """Makes the scene file at ``path`` the scene every later call sees."""
        self._host.load_scene(_os.fspath(path))

    def run(self, command, **arguments):
        """Runs a command as ``quillix run COMMAND name=value ... --json`` does and returns
        {"command", "status", "returnValue", "log", "selection"}; arguments missing take the
        command's defaults."""
        def text(value):
            if isinstance(value, (bool, _np.bool_)):
                return "true" if value else "false"
            return str(value)

        assignments = ["%s=%s" % (name, text(value)) for name, value in arguments.items()]
        return _json.loads(self._host.run_json(command, assignments))

    def close(self):
        """Ends the named instances and unloads the plug-in; returns {"shutdownLog",
        "unloadLog"}, what their Term and the unloading logged. Later calls raise."""
        return _json.loads(self._host.unload())

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.close()
