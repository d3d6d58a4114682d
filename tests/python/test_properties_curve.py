"""Curve functions on arbitrary arrays: the node's result bit for bit (Host.eval on the same
float32 values), or ValueError / TypeError as the array contract says, never anything else."""

import math

import numpy as np
import pytest
from hypothesis import assume, given
from hypothesis import strategies as st

import quillix
from strategies import (SPECIAL_FLOATS, arrays, as_floats, as_indices, as_points, f32,
                        relayout, rows, same_bits)

FLOATS = st.one_of(st.floats(-10, 10, width=32), st.sampled_from(SPECIAL_FLOATS).map(f32))
POINTS = st.one_of(arrays(rows((3,))), arrays(st.sampled_from([(0,), (4,), (3, 2), (2, 3, 3)])))


def node_value(host, node, inputs):
    """The one element's value of output 2010, as NumPy."""
    request = {"node": node, "port": 2010, "inputs": inputs}
    values = host.eval(request)["results"][0]["outputs"][0]["values"]
    return values[0]


def vector3s(points):
    return {"structure": "array", "type": "vector3", "values": [points]}


def check(host, expected, call, node, inputs):
    """`call` raises the error class `expected` names, or gives the node's value for the
    ports `inputs(expected)`."""
    if isinstance(expected, type):
        with pytest.raises(expected):
            call()
        return
    same_bits(call(), node_value(host, node, inputs(expected)))


@given(POINTS, FLOATS, st.booleans(), st.booleans())
def test_simplify_is_the_node(host, points, epsilon, closed, min_three):
    check(host, as_points(points),
          lambda: quillix.simplify_polyline(points, epsilon, closed, min_three),
          "Quillix_slins", lambda line: {
              "1010": vector3s(line), "1020": {"type": "float", "values": [epsilon]},
              "1030": {"type": "bool", "values": [closed]},
              "1040": {"type": "bool", "values": [min_three]}})


def resample_arguments(number):
    """The node's one port as the function's keywords: a negative value is a density."""
    return {"density": -number} if number < 0 else {"count": number}


@given(POINTS, st.one_of(st.integers(-3, 40).map(float), FLOATS), FLOATS,
       st.integers(-2, 6))
def test_resample_is_the_node(host, points, number, strength, iterations):
    expected = as_points(points)
    if not isinstance(expected, type):
        # Keep the output small: the count a density asks for follows the line's length.
        length = float(np.sum(np.linalg.norm(np.diff(expected.astype(np.float64), axis=0),
                                             axis=1)))
        assume(not (number < 0 and math.isfinite(length) and length * -number > 1e5))
    if math.isnan(number):  # checked before the points
        expected = ValueError
    check(host, expected, lambda: quillix.resample_polyline(
        points, smooth_strength=strength, smooth_iterations=iterations,
        **resample_arguments(number)), "Quillix_rlins", lambda line: {
            "1010": vector3s(line), "1020": {"type": "float", "values": [number]},
            "1030": {"type": "float", "values": [strength]},
            "1040": {"type": "int", "values": [iterations]}})


def spheres_node_inputs(positions, ups, intervals, radii, corner, closed, alignment,
                        distribution, seed, max_spheres):
    return {
        "1010": vector3s(positions), "1020": vector3s(ups),
        "1025": {"structure": "array", "type": "int", "values": [intervals]},
        "1030": {"structure": "array", "type": "float", "values": [radii]},
        "1040": {"type": "float", "values": [corner[0]]},
        "1050": {"type": "float", "values": [corner[1]]},
        "1060": {"type": "int", "values": [int(closed)]},
        "1070": {"type": "int", "values": [alignment]},
        "1080": {"type": "int", "values": [distribution]},
        "1090": {"type": "int", "values": [seed]},
        "1200": {"type": "int", "values": [max_spheres]}}


@given(positions=POINTS,
       ups=st.one_of(arrays(rows((3,), 3)), st.just([[0.0, 0.0, 1.0]])),
       intervals=st.one_of(st.just([-1]), arrays(rows((), 4), small=8)),
       radii=st.one_of(arrays(rows((), 3)), st.lists(st.floats(0.25, 3, width=32), max_size=3)),
       corner=st.tuples(FLOATS, FLOATS), closed=st.booleans(),
       alignment=st.integers(-1, 3), distribution=st.integers(-1, 2),
       seed=st.integers(-5, 5), interpolation=st.one_of(
           st.integers(-1, 4), st.tuples(*[st.sampled_from([20, 40, 50, 7])] * 3)),
       max_spheres=st.integers(-1, 300))
def test_spheres_are_the_nodes(host, positions, ups, intervals, radii, corner, closed,
                               alignment, distribution, seed, interpolation, max_spheres):
    contract = [as_points(positions), as_points(ups), as_indices(intervals), as_floats(radii)]
    errors = [c for c in contract if isinstance(c, type)]
    if not errors and (contract[2].ndim != 1 or contract[3].ndim != 1):
        errors = [ValueError]
    call = lambda: quillix.spheres_along_spline(  # noqa: E731
        positions, up_vectors=ups, interval_indices=intervals, radii=radii,
        corner_threshold=corner[0], corner_scale=corner[1], closed=closed,
        alignment=alignment, distribution=distribution, random_seed=seed,
        interpolation=interpolation, max_spheres=max_spheres)
    if errors:
        with pytest.raises((TypeError, ValueError)):
            call()
        return
    got = call()
    inputs = spheres_node_inputs(*contract, corner, closed, alignment, distribution, seed,
                                 max_spheres)
    if isinstance(interpolation, tuple):
        node = "Quillix_dsals2"
        for port, value in zip((1100, 1104, 1108), interpolation):
            inputs[str(port)] = {"type": "int", "values": [value]}
    else:
        node = "Quillix_dsals"
        inputs["1100"] = {"type": "int", "values": [interpolation]}
    same_bits(got, node_value(host, node, inputs))


@given(st.data())
def test_layout_never_changes_a_result(data):
    """The same values in any layout and any real dtype that holds them exactly give the same
    bits."""
    line = data.draw(arrays(rows((3,), 8), dtypes=[np.dtype(np.float32)]))
    reference = quillix.resample_polyline(line, count=7)
    for dtype in (np.float64, np.float32):
        again = data.draw(relayout(line.astype(dtype)))
        same_bits(quillix.resample_polyline(again, count=7), reference)
        same_bits(quillix.simplify_polyline(again, 0.5), quillix.simplify_polyline(line, 0.5))
