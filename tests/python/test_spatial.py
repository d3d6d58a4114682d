"""Spatial cores against the nodes, and their vectorised pairing."""

import numpy as np
import pytest

import quillix
from conftest import ElementInputs, f32, load_example

FUNCTIONS = {
    "Quillix_cdbte": lambda a, b, mode: quillix.ellipsoid_distance(a, b),
    "Quillix_iotb": lambda a, b, mode: quillix.boxes_intersect(a, b, mode=mode),
    "Quillix_iotmb": lambda a, b, mode: quillix.boxes_contact_time(a, b, mode=mode),
}


@pytest.mark.parametrize("example", ["spatial/cdbte.json", "spatial/iotb.json", "spatial/iotmb.json"])
def test_pairs_match_node(host, example):
    document = load_example(example)
    result = host.eval(document, arrays=False)
    for request, outcome in zip(document["requests"], result["results"]):
        inputs = ElementInputs(host, request)
        values = outcome["outputs"][0]["values"]
        for element in range(request.get("elements", 1)):
            got = FUNCTIONS[request["node"]](
                f32(inputs(1010, element)), f32(inputs(1020, element)), inputs(1000, 0))
            expected = values[element]
            if isinstance(expected, list):
                assert np.asarray(got).astype(np.float32).tobytes() == f32(expected).tobytes()
            else:
                assert f32(got).tobytes() == f32(expected).tobytes()


def boxes(count, seed):
    rng = np.random.default_rng(seed)
    m = np.zeros((count, 4, 4), np.float32)
    m[:, :3, :3] = rng.normal(size=(count, 3, 3))
    m[:, 3, :3] = rng.uniform(-3, 3, size=(count, 3))
    m[:, :3, 3] = rng.normal(size=(count, 3))  # displacement of the moving boxes
    m[:, 3, 3] = rng.integers(0, 3, size=count)
    return m


def test_pairing_follows_the_nodes():
    a, b = boxes(1000, 1), boxes(700, 2)
    for function in (quillix.ellipsoid_distance, quillix.boxes_intersect, quillix.boxes_contact_time):
        stacked = function(a, b)  # two stacks: as long as the shorter, computed in parallel
        assert stacked.shape == (700,)
        one_by_one = [function(a[i], b[i]) for i in (0, 350, 699)]
        assert [stacked[i] for i in (0, 350, 699)] == one_by_one
        single = function(a[5], b)  # a single matrix against every entry
        assert single.shape == (700,) and single[9] == function(a[5], b[9])
        assert function(a[:0], b).shape == (0,)
    assert isinstance(quillix.boxes_intersect(a[0], b[0]), bool)
    assert isinstance(quillix.ellipsoid_distance(a[0], b[0]), float)


def test_modes_and_degenerate_matrices():
    identity = np.eye(4, dtype=np.float32)
    near = identity.copy()
    near[3, 0] = 2.001
    assert not quillix.boxes_intersect(identity, near, mode=-1)
    singular = np.zeros((4, 4), np.float32)
    assert quillix.ellipsoid_distance(singular, singular) == 0.0
    with_nan = identity.copy()
    with_nan[0, 0] = np.nan
    quillix.boxes_intersect(with_nan, identity)  # a defined answer, whatever it is
    assert quillix.boxes_contact_time(identity, identity) == 0.0
