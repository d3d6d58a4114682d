"""The matrix-pair functions on arbitrary matrices and stacks: the node's value for every pair
(Host.eval, one element per pair), or ValueError / TypeError as the array contract says."""

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st

import quillix
from strategies import arrays, as_matrices, broadcast_rows, rows, same_bits

FUNCTIONS = [
    ("Quillix_cdbte", lambda a, b, mode: quillix.ellipsoid_distance(a, b), np.float32),
    ("Quillix_iotb", lambda a, b, mode: quillix.boxes_intersect(a, b, mode=mode), np.bool_),
    ("Quillix_iotmb", lambda a, b, mode: quillix.boxes_contact_time(a, b, mode=mode),
     np.float32),
]
MATRICES = st.one_of(
    arrays(st.just((4, 4)), small=3), arrays(rows((4, 4), 5), small=3),
    arrays(st.sampled_from([(4,), (3, 4), (2, 4, 3), (1, 1, 4, 4), ()]), small=3),
    broadcast_rows((4, 4), huge=False))


def pairs(a, b):
    """The pairs the nodes form: single with single, a single with every entry, two stacks
    up to the shorter."""
    a3, b3 = a.reshape(-1, 4, 4), b.reshape(-1, 4, 4)
    if a.ndim == 2:
        a3 = np.repeat(a3, len(b3), axis=0)
    if b.ndim == 2:
        b3 = np.repeat(b3, len(a3), axis=0)
    count = min(len(a3), len(b3))
    return a3[:count], b3[:count]


@pytest.mark.parametrize("node, function, dtype", FUNCTIONS)
@given(a=MATRICES, b=MATRICES, mode=st.integers(-2, 2))
def test_pairs_are_the_nodes(host, node, function, dtype, a, b, mode):
    ca, cb = as_matrices(a), as_matrices(b)
    errors = [c for c in (ca, cb) if isinstance(c, type)]
    if errors:
        with pytest.raises(errors[0]):
            function(a, b, mode)
        return
    got = function(a, b, mode)
    left, right = pairs(ca, cb)
    if ca.ndim == 2 and cb.ndim == 2:
        assert isinstance(got, float if dtype is np.float32 else bool)
    else:
        assert got.dtype == dtype and got.shape == (len(left),)
    if len(left) == 0:
        return
    request = {"node": node, "port": 2010, "elements": len(left), "inputs": {
        "1000": {"type": "int", "constant": True, "values": [mode]},
        "1010": {"type": "matrix44", "values": left}, "1020": {"type": "matrix44", "values": right}}}
    expected = host.eval(request)["results"][0]["outputs"][0]["values"]
    same_bits(np.asarray(got, dtype), np.asarray(expected, dtype))
