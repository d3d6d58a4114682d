"""Curve cores against the nodes: every shipped slins, rlins and dsals example gives
bit-identical arrays from the functions and from the host."""

import numpy as np
import pytest

import quillix
from conftest import ElementInputs, f32, load_example, requests_of


def same_bits(actual, expected):
    expected = np.asarray(expected, dtype=np.float32).reshape(actual.shape)
    assert actual.dtype == np.float32
    assert actual.tobytes() == expected.tobytes()


def compare_example(host, example, nodes, call):
    document = load_example(example)
    result = host.eval(document)
    checked = 0
    for request, outcome in zip(document["requests"], result["results"]):
        if request["node"] not in nodes:
            continue
        inputs = ElementInputs(host, request, document)
        values = outcome["outputs"][0]["values"]
        for element in range(request.get("elements", 1)):
            same_bits(call(request["node"], lambda port: inputs(port, element)), values[element])
            checked += 1
    assert checked > 0


def test_simplify_matches_node(host):
    def call(node, v):
        return quillix.simplify_polyline(
            v(1010), epsilon=v(1020), closed=v(1030), min_three=v(1040)
        )

    compare_example(host, "curve/slins.json", {"Quillix_slins"}, call)


def test_resample_matches_node(host):
    def call(node, v):
        n = f32(v(1020))
        mode = {"count": float(n)} if n >= 0 else {"density": -float(n)}
        return quillix.resample_polyline(
            v(1010), smooth_strength=v(1030), smooth_iterations=v(1040), **mode
        )

    compare_example(host, "curve/rlins.json", {"Quillix_rlins"}, call)


def test_spheres_match_both_nodes(host):
    def call(node, v):
        interpolation = v(1100) if node == "Quillix_dsals" else (v(1100), v(1104), v(1108))
        return quillix.spheres_along_spline(
            v(1010), up_vectors=v(1020), interval_indices=v(1025), radii=v(1030),
            corner_threshold=v(1040), corner_scale=v(1050), closed=bool(v(1060)),
            alignment=v(1070), distribution=v(1080), random_seed=v(1090),
            interpolation=interpolation, max_spheres=v(1200))

    compare_example(host, "curve/dsals.json", {"Quillix_dsals", "Quillix_dsals2"}, call)


def test_keyword_defaults_are_the_nodes():
    line = f32([[0, 0, 0], [1, 0.3, 0], [2, 0, 0], [3, 5, 0]])
    assert quillix.simplify_polyline(line).tobytes() == quillix.simplify_polyline(
        line, 1.0, False, False).tobytes()
    assert quillix.resample_polyline(line).shape == (20, 3)
    assert quillix.resample_polyline(line, count=4, smooth_iterations=0)[-1].tolist() == [3, 5, 0]
    assert len(quillix.resample_polyline(line, density=2.0)) > 0
    with pytest.raises(ValueError, match="not both"):
        quillix.resample_polyline(line, count=3, density=1.0)
    with pytest.raises(ValueError, match="density"):
        quillix.resample_polyline(line, density=0.0)


def test_inputs_are_viewed_or_converted_once():
    line = f32([[0, 0, 0], [1, 0, 0], [2, 0, 0]])
    as_float64 = quillix.simplify_polyline(line.astype(np.float64), 0.0)
    as_list = quillix.simplify_polyline(line.tolist(), 0.0)
    strided = quillix.simplify_polyline(np.repeat(line, 2, axis=0)[::2], 0.0)
    for result in (as_float64, as_list, strided):
        assert result.tobytes() == line.tobytes()
    assert quillix.simplify_polyline(line, 0.0) is not line  # the result is always new


def test_interpolation_forms():
    points = f32([[0, 0, 0], [4, 0, 0], [4, 4, 0], [0, 4, 0]])
    flags = quillix.spheres_along_spline(points, corner_threshold=0, interpolation=np.int64(3))
    types = quillix.spheres_along_spline(points, corner_threshold=0, interpolation=(20, 20, 20))
    assert flags.tobytes() == types.tobytes()
    with pytest.raises(ValueError, match="interpolation"):
        quillix.spheres_along_spline(points, interpolation=(20, 20))
