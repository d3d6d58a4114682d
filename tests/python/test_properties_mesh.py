"""Meshes and searches on arbitrary positions and polygons: Mesh builds what the path node
builds (a failed build is a KernelError where the node gives empty paths), chain_path is the
node's path for the element (Host.eval), vertex_path and vertex_paths agree with it."""

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st

import quillix
from strategies import INT_DTYPES, arrays, as_indices, as_points, relayout, rows

POLYGON = st.lists(st.integers(-1, 9), min_size=0, max_size=5)
SIGNED = [dtype for dtype in INT_DTYPES if dtype.kind == "i"]


@st.composite
def descriptions(draw):
    """A polygonal description: each polygon's indices closed by -1."""
    flat = [i for polygon in draw(st.lists(POLYGON, min_size=1, max_size=6))
            for i in polygon + [-1]]
    return draw(relayout(np.asarray(flat, draw(st.sampled_from(SIGNED)))))


POLYGONS = st.one_of(
    st.lists(POLYGON, min_size=1, max_size=6), descriptions(),
    arrays(rows((3,), 6), dtypes=INT_DTYPES + [np.dtype("float64"), np.dtype("bool")], small=9),
    arrays(rows((4,), 4), dtypes=[np.dtype("int32"), np.dtype("int64")], small=9))


def description_of(polygons):
    """The node's polygonal description for `polygons`, or the error Mesh must raise."""
    if isinstance(polygons, list):
        description = []
        for polygon in polygons:
            indices = as_indices(polygon)
            if isinstance(indices, type):
                return indices
            if indices.ndim != 1:
                return ValueError
            if (indices < 0).any():
                return ValueError
            description += indices.tolist() + [-1]
        return np.asarray(description, np.int32)
    indices = as_indices(polygons)
    if isinstance(indices, type) or indices.ndim == 1:
        return indices
    if indices.ndim != 2:
        return ValueError
    if (indices < 0).any():
        return ValueError
    closers = -np.ones((len(indices), 1), np.int32)
    return np.concatenate([indices, closers], axis=1).ravel()


def node_paths(host, positions, description, inits, flags):
    inputs = {
        "1010": {"type": "bool", "constant": True, "values": [True]},
        "1020": {"structure": "array", "type": "vector3", "constant": True, "values": [positions]},
        "1030": {"structure": "array", "type": "int", "constant": True, "values": [description]},
        "1040": {"structure": "array", "type": "int", "values": inits}}
    if flags is not None:
        inputs["1823"] = {"structure": "array", "type": "bool", "constant": True,
                          "values": [flags]}
    request = {"node": "Quillix_fpom", "port": 2020, "elements": len(inits), "inputs": inputs}
    values = host.eval(request, arrays=False)["results"][0]["outputs"][0]["values"]
    return [[] if v is None else v for v in values]


@given(positions=st.one_of(arrays(rows((3,), 10), small=4), arrays(rows((2,), 3))),
       polygons=POLYGONS, data=st.data())
def test_mesh_and_paths_are_the_nodes(host, positions, polygons, data):
    points, description = as_points(positions), description_of(polygons)
    errors = [c for c in (points, description) if isinstance(c, type)]
    if errors:
        with pytest.raises((TypeError, ValueError)):
            quillix.Mesh(positions, polygons)
        return
    inits = data.draw(st.lists(st.lists(st.integers(-1, 11), max_size=4), min_size=1,
                               max_size=4))
    try:
        mesh = quillix.Mesh(positions, polygons)
    except quillix.KernelError:
        assert node_paths(host, points, description, inits, None) == [[]] * len(inits)
        return
    count = mesh.vertex_count
    assert mesh.positions.shape == (count, 3) and mesh.components().shape == (count,)
    for v in range(count):
        assert all(v in mesh.neighbours(n).tolist() for n in mesh.neighbours(v))
    blocked = data.draw(st.one_of(st.none(), st.lists(st.booleans(), min_size=count,
                                                      max_size=count).map(np.array)))
    flags = None if blocked is None else ~blocked
    expected = node_paths(host, points, description, inits, flags)
    got = [quillix.chain_path(mesh, init, blocked=blocked).tolist() for init in inits]
    assert got == expected

    pairs = np.array([(s, e) for s in range(-1, count + 1) for e in range(count + 1)], np.int32)
    singles = []
    for start, end in pairs:
        try:
            singles.append(quillix.vertex_path(mesh, start, end, blocked=blocked).tolist())
        except quillix.KernelError as error:
            assert error.status in (6, 27, -2)
            singles.append([])
        assert singles[-1] == quillix.chain_path(mesh, [start, end], blocked=blocked).tolist()
    parallel = quillix.vertex_paths(mesh, pairs, blocked=blocked, threads=2)
    assert [p.tolist() for p in parallel] == singles
