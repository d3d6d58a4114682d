"""Host against the `quillix` tool: every shipped example, evaluated in a fresh process as the
tool evaluates it, gives the same document; commands and errors come through unchanged."""

import json
import os
import pathlib
import subprocess
import sys

import numpy as np
import pytest

import quillix
from conftest import EXAMPLES, ROOT, load_example

PACKAGE_PARENT = str(pathlib.Path(quillix.__file__).resolve().parents[1])
SHIPPED = sorted(
    str(p.relative_to(EXAMPLES))
    for p in list(EXAMPLES.glob("*.json")) + list(EXAMPLES.glob("*/*.json"))
    if p.parent.name not in ("scenes", "userhome")
)

# Loads, evaluates and unloads like one `quillix eval` run, and prints the tool's document.
HOST_RUN = """
import json, sys
import quillix
host = quillix.Host()
document = json.loads(sys.stdin.read())
out = host.eval(document, arrays=False)
out["loadLog"] = host.load_log
end = host.close()
out["shutdownLog"], out["unloadLog"] = end["shutdownLog"], end["unloadLog"]
print(json.dumps(out))
"""


def run_python(code, stdin, cwd):
    env = dict(os.environ, PYTHONPATH=PACKAGE_PARENT)
    done = subprocess.run([sys.executable, "-c", code], input=stdin, capture_output=True,
                          text=True, env=env, cwd=cwd, check=False)
    assert done.returncode == 0, done.stderr
    return done.stdout


@pytest.mark.parametrize("example", SHIPPED)
def test_eval_gives_the_tools_document(tool, example):
    # Both from the repository root: relative file names in requests resolve against it.
    expected = json.loads(subprocess.run([tool, "eval", EXAMPLES / example], capture_output=True,
                                         text=True, check=True, cwd=ROOT).stdout)
    document = load_example(example)
    got = json.loads(run_python(HOST_RUN, json.dumps(document), ROOT))
    assert got == expected


def test_numeric_outputs_become_arrays(host):
    request = {"node": "Quillix_divi", "port": [2010, 2020], "elements": 4, "batch": [0, 2, 3],
               "inputs": {"1010": {"type": "int", "values": np.array([7, -7, 7, -7])},
                          "1020": {"type": "int", "constant": True, "values": [np.int32(2)]}}}
    outputs = host.eval(request)["results"][0]["outputs"]
    assert outputs[0]["values"][0].dtype == np.int32
    assert outputs[0]["values"][1] is None  # element 1 lies outside the batch
    nan_bits = {"node": "Quillix_slins", "port": 2010,
                "inputs": {"1010": {"structure": "array", "type": "vector3",
                                    "values": [np.array([[np.nan, 0, 0], [1, 1, 1]])]}}}
    points = host.eval(nan_bits)["results"][0]["outputs"][0]["values"]
    assert points.dtype == np.float32 and np.isnan(points[0, 0, 0])


INSTANCES_RUN = """
import json, sys
import quillix
requests = json.loads(sys.stdin.read())["requests"]
host = quillix.Host()
calls = [host.eval(requests[i:i + 1], arrays=False) for i in range(3)]
print(json.dumps({"calls": calls, "end": host.close()}))
"""


def test_named_instances_live_from_call_to_call():
    # In a process of its own: unloading the plug-in ends the commands of every Host.
    document = load_example("pathfind/fpom.json")
    out = json.loads(run_python(INSTANCES_RUN, json.dumps(document), ROOT))
    first, second, third = out["calls"]
    assert first["shutdownLog"] == []  # the instance outlives the call
    # The same inputs at the same time in a later call: nothing to rebuild, nothing logged.
    assert second["results"][0]["log"] == []
    assert not any("build geometry" in line[1] for line in third["results"][0]["log"])
    assert "Term" in out["end"]["shutdownLog"][0][1]


def test_bad_requests_raise_the_tools_message(host):
    with pytest.raises(ValueError, match=r"unknown node \"Quillix_none\""):
        host.eval({"node": "Quillix_none", "port": 2010})
    with pytest.raises(ValueError, match=r"/requests/0/inputs/1010: expected an object"):
        host.eval([{"node": "Quillix_divi", "port": 2010, "inputs": {"1010": 3}}])


def test_nodes_and_commands(host):
    listing = host.nodes()
    assert len(listing["nodes"]) == 29 and len(listing["commands"]) == 2
    done = host.run("Quillix__FindMatchingObjects", inObj="nothing")
    assert done["log"][-1][1].startswith("Unable to find")
    with pytest.raises(ValueError, match="unknown command"):
        host.run("NoSuchCommand")
    host.load_scene(EXAMPLES / "scenes" / "minimal.json")
    with pytest.raises(ValueError):
        host.load_scene(EXAMPLES / "missing.json")
