"""Shared fixtures: the repository's examples, the built `quillix` tool and one Host, and the
hypothesis profiles of the property tests."""

import json
import os
import pathlib
import tempfile

import numpy as np
import pytest
from hypothesis import HealthCheck, settings
from hypothesis.configuration import set_hypothesis_home_dir

import quillix

ROOT = pathlib.Path(__file__).resolve().parents[2]
EXAMPLES = ROOT / "examples"

# "ci": reproducible and short enough for every test run. "offline" (QUILLIX_HYPOTHESIS=offline)
# searches far longer with fresh random examples.
# Hypothesis keeps caches in a folder of its own: not in the source tree.
set_hypothesis_home_dir(os.path.join(tempfile.gettempdir(), "quillix-hypothesis"))
settings.register_profile("ci", derandomize=True, deadline=None, max_examples=60, database=None,
                          suppress_health_check=[HealthCheck.too_slow])
settings.register_profile("offline", deadline=None, max_examples=2000, database=None,
                          suppress_health_check=[HealthCheck.too_slow])
settings.load_profile(os.environ.get("QUILLIX_HYPOTHESIS", "ci"))
# The oracles round the same extreme values to float32 as the package does: no warnings.
np.seterr(all="ignore")


@pytest.fixture(scope="session")
def host():
    with quillix.Host() as h:
        yield h


@pytest.fixture(scope="session")
def tool(host):
    """The `quillix` executable built beside the plug-in the Host loaded."""
    return pathlib.Path(host.plugin_path).parent / "quillix"


def load_example(relative):
    """A shipped request document, its relative scene and mesh files made absolute."""
    path = EXAMPLES / relative
    document = json.loads(path.read_text())
    if "scene" in document:
        document["scene"] = str((path.parent / document["scene"]).resolve())
    for request in document["requests"]:
        for given in request.get("inputs", {}).values():
            if "meshFile" in given.get("from", {}):
                given["from"]["meshFile"] = str((path.parent / given["from"]["meshFile"]).resolve())
    return document


def bound_value(source, document):
    """The value of an input bound as the examples bind them: a mesh file's points or
    polygons, or the control points of a curve in the document's scene file."""
    if "meshFile" in source:
        positions, polygons = quillix.read_mesh(source["meshFile"])
        return positions.astype(np.float32) if source["data"] == "points" else polygons
    scene = json.loads(pathlib.Path(document["scene"]).read_text())
    curves = next(o["curves"] for o in scene["objects"] if o["name"] == source["object"])
    return [point[:3] for point in curves[source.get("curve", 0)]["points"]]


class ElementInputs:
    """The inputs one element of a request sees: given values, constants, bound values (of
    the request's `document`), or the port's default (an array port's default is an array of
    that one value)."""

    def __init__(self, host, request, document=None):
        node = next(n for n in host.nodes()["nodes"] if n["name"] == request["node"])
        self.ports = {p["id"]: p for p in node["inputs"]}
        self.given = request.get("inputs", {})
        self.document = document

    def __call__(self, port, element):
        given = self.given.get(str(port))
        if given is None:
            default = self.ports[port]["default"]
            return [default] if self.ports[port]["structures"] == 2 else default
        if "from" in given:
            return bound_value(given["from"], self.document)
        return given["values"][0 if given.get("constant") else element]

    def is_array(self, port):
        given = self.given.get(str(port))
        return given is not None and given.get("structure") == "array"


def requests_of(document, *nodes):
    return [r for r in document["requests"] if r["node"] in nodes]


def f32(values):
    return np.asarray(values, dtype=np.float32)
