"""Finds the ``quillix`` Python module for the add-on.

Blender runs its own interpreter with its own ``sys.path``, so a module that Debian's python3
imports is not necessarily visible here. The places are tried in this order, and the first
folder whose ``quillix`` package imports wins:

1. a ``quillix`` that already imports (installed where Blender's Python looks);
2. the add-on preference "Module Folder";
3. the folders of the ``QUILLIX_PYTHONPATH`` environment variable;
4. the build tree beside the add-on's source folder (``build/release/python``);
5. the site folders where ``cmake --install`` puts the package, and the user site folder
   (whose ``.pth`` files the demo uses to register the build tree).

The result is kept, so the search runs once per session; a failed search is repeated on the
next call, since the user may have fixed the path meanwhile.
"""

import importlib
import os
import site
import sys

_ADDON_DIR = os.path.dirname(os.path.abspath(__file__))
_BUILD_TREE = os.path.normpath(os.path.join(_ADDON_DIR, "..", "..", "build", "release", "python"))

_module = None


def _preference_folder():
    """The "Module Folder" add-on preference, or "" outside a registered add-on."""
    try:
        import bpy

        addon = bpy.context.preferences.addons.get(__package__)
    except (ImportError, AttributeError):
        return ""
    return bpy.path.abspath(addon.preferences.module_folder) if addon else ""


def _site_folders():
    folders = []
    try:
        folders += site.getsitepackages()
    except AttributeError:  # a virtual environment's site module may lack it
        pass
    folders.append(site.getusersitepackages())
    return folders


def candidate_folders():
    """Folders that may hold the ``quillix`` package, in search order (before the site
    folders' ``.pth`` files are read)."""
    folders = [_preference_folder()]
    folders += os.environ.get("QUILLIX_PYTHONPATH", "").split(os.pathsep)
    folders.append(_BUILD_TREE)
    folders += _site_folders()
    return [f for f in folders if f]


def _try_folder(folder, errors):
    """Imports quillix with `folder` first on sys.path; leaves sys.path as it was on failure."""
    if not os.path.isfile(os.path.join(folder, "quillix", "__init__.py")):
        return None
    sys.path.insert(0, folder)
    try:
        return importlib.import_module("quillix")
    except ImportError as error:
        sys.path.remove(folder)
        sys.modules.pop("quillix", None)
        errors.append(f"{folder}: {error}")
        return None


def load():
    """Returns ``(module, "")`` or ``(None, message)``, the message naming what was tried."""
    global _module
    if _module is not None:
        return _module, ""
    errors = []
    try:
        _module = importlib.import_module("quillix")
        return _module, ""
    except ImportError:
        pass
    for folder in candidate_folders():
        _module = _try_folder(folder, errors)
        if _module is not None:
            return _module, ""
    # A .pth file in a site folder (the demo's quillix-build.pth) names the build tree.
    for folder in _site_folders():
        if os.path.isdir(folder):
            before = set(sys.path)
            site.addsitedir(folder)
            for added in [p for p in sys.path if p not in before]:
                _module = _try_folder(added, errors)
                if _module is not None:
                    return _module, ""
    tried = "; ".join(errors) or "no quillix package in " + ", ".join(candidate_folders())
    return None, (
        "Cannot import the quillix module (" + tried + "). Build it (cmake --build --preset "
        "release --target _quillix), install it (cmake --install), or set the add-on's "
        "Module Folder or QUILLIX_PYTHONPATH to the folder holding quillix/."
    )


def quillix_or_report(operator):
    """The module, or None after a warning report on `operator`; for an operator's execute."""
    module, message = load()
    if module is None:
        operator.report({"WARNING"}, message)
    return module
