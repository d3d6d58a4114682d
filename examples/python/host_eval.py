"""The offline host from Python: the plug-in's nodes, a request with NumPy inputs, and a
shipped example evaluated as `quillix eval` evaluates it."""

import json
import os
import pathlib

import numpy as np

import quillix

examples = pathlib.Path(__file__).resolve().parents[1]

with quillix.Host() as host:
    listing = host.nodes()
    print(listing["plugin"]["name"], "with", len(listing["nodes"]), "nodes")

    request = {"node": "Quillix_divi", "port": [2010, 2020], "elements": 4,
               "inputs": {"1010": {"type": "int", "values": np.array([7, -7, 7, -7])},
                          "1020": {"type": "int", "values": np.array([2, 2, -2, 0])}}}
    for output in host.eval(request)["results"][0]["outputs"]:
        print("Quillix_divi port", output["port"], "->", output["values"])

    # The example names its mesh file relative to its own folder; the host takes relative
    # paths from the working directory.
    os.chdir(examples / "pathfind")
    document = json.loads(pathlib.Path("fpom.json").read_text())
    result = host.eval(document)
    for entry in result["results"][:3]:
        print("Quillix_fpom paths:", entry["outputs"][1]["values"])
