"""Anything at all in any argument of any function: a result, or ValueError, TypeError,
IndexError or KernelError, never a crash or another exception; and an argument the contract
converts gives the same bits as its float32 (or int32) conversion."""

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st

import quillix
from strategies import any_shape, arrays, as_floats, as_indices, broadcast_rows, same_bits

LINE = np.array([[0, 0, 0], [1, 0.5, 0], [2, 0, 0], [3, 1, 0]], np.float32)
EYE = np.eye(4, dtype=np.float32)
MESH = quillix.Mesh(LINE, [[0, 1, 2], [1, 3, 2]])
ERRORS = (TypeError, ValueError, IndexError, quillix.KernelError)

JUNK = st.one_of(
    arrays(any_shape()), arrays(st.sampled_from([(4, 3), (2, 4, 4), (4, 4), (4,), (16,)])),
    broadcast_rows((3,), huge=True), broadcast_rows((4, 4), huge=True),
    st.none(), st.booleans(), st.integers(), st.floats(), st.text(max_size=4),
    st.lists(st.one_of(st.integers(-3, 3), st.floats(), st.lists(st.integers(-3, 3))), max_size=4),
    st.dictionaries(st.text(max_size=3), st.integers(), max_size=2), st.just(object()))


def spheres(**arguments):
    return quillix.spheres_along_spline(LINE, max_spheres=64, **arguments)


def weights(value):
    return quillix.find_matching_scores(quillix.ObjectFeatures(), [quillix.ObjectFeatures()],
                                        weights=value)


def set_attribute(owner, name):
    def call(value):
        setattr(owner, name, value)
        return getattr(owner, name)
    return call


# Every argument of every function, with the conversion the contract applies to it (None:
# the argument is not an array the contract converts).
CALLS = {
    "simplify_polyline": (quillix.simplify_polyline, as_floats),
    "resample_polyline": (lambda x: quillix.resample_polyline(x, count=5), as_floats),
    "resample count": (lambda x: quillix.resample_polyline(LINE, count=x), None),
    "resample density": (lambda x: quillix.resample_polyline(LINE, density=x), None),
    "spheres positions": (lambda x: quillix.spheres_along_spline(x, max_spheres=64), as_floats),
    "spheres up_vectors": (lambda x: spheres(up_vectors=x), as_floats),
    "spheres interval_indices": (lambda x: spheres(interval_indices=x), as_indices),
    "spheres radii": (lambda x: spheres(radii=x), None),  # the sphere count follows the radii
    "spheres interpolation": (lambda x: spheres(interpolation=x), as_indices),
    "ellipsoid_distance": (lambda x: quillix.ellipsoid_distance(x, EYE), as_floats),
    "boxes_intersect": (lambda x: quillix.boxes_intersect(EYE, x), as_floats),
    "boxes_contact_time": (lambda x: quillix.boxes_contact_time(x, x), as_floats),
    "boxes mode": (lambda x: quillix.boxes_intersect(EYE, EYE, mode=x), None),
    "Mesh positions": (lambda x: quillix.Mesh(x, [[0, 1, 2]]).positions, as_floats),
    "Mesh polygons": (lambda x: quillix.Mesh(LINE, x).components(), as_indices),
    "Mesh.neighbours": (MESH.neighbours, None),
    "vertex_path end": (lambda x: quillix.vertex_path(MESH, 0, x), None),
    "vertex_path blocked": (lambda x: quillix.vertex_path(MESH, 0, 3, blocked=x), None),
    "vertex_paths pairs": (lambda x: quillix.vertex_paths(MESH, x), as_indices),
    "vertex_paths threads": (lambda x: quillix.vertex_paths(MESH, [[0, 3]], threads=x), None),
    "chain_path indices": (lambda x: quillix.chain_path(MESH, x), as_indices),
    "chain_path mesh": (lambda x: quillix.chain_path(x, [0, 1]), None),
    "to_text": (quillix.to_text, None),
    "number_text": (quillix.number_text, as_floats),
    "number_text precision": (lambda x: quillix.number_text(1.5, precision=x), None),
    "join_strings": (quillix.join_strings, None),
    "join_strings delimiter": (lambda x: quillix.join_strings(["a", "b"], x), None),
    "pack_string": (quillix.pack_string, None),
    "levenshtein_distance": (lambda x: quillix.levenshtein_distance(x, "abc"), None),
    "status_message": (quillix.status_message, None),
    "status_message prefix": (lambda x: quillix.status_message(3, prefix=x), None),
    "read_mesh": (quillix.read_mesh, None),
    "find_matching_scores weights": (weights, as_floats),
    "find_matching_scores candidates": (
        lambda x: quillix.find_matching_scores(quillix.ObjectFeatures(), x), None),
    "find_matching_scores num_out": (lambda x: quillix.find_matching_scores(
        quillix.ObjectFeatures(), [], num_out=x), None),
    "ObjectFeatures.box_extent": (set_attribute(quillix.ObjectFeatures(), "box_extent"), None),
    "ObjectFeatures.point_count": (set_attribute(quillix.ObjectFeatures(), "point_count"), None),
    "TransformParts.rotation": (set_attribute(quillix.TransformParts(), "rotation"), None),
}


def results_equal(a, b):
    if isinstance(a, np.ndarray):
        same_bits(a, b)
    elif isinstance(a, (list, tuple)):
        assert len(a) == len(b)
        for x, y in zip(a, b):
            results_equal(x, y)
    elif isinstance(a, dict):
        assert a.keys() == b.keys()
        for key in a:
            results_equal(a[key], b[key])
    else:
        assert a == b or (a != a and b != b)


@pytest.mark.parametrize("name", sorted(CALLS))
@given(value=JUNK)
def test_any_argument_gives_a_result_or_a_clear_error(name, value):
    function, contract = CALLS[name]
    try:
        result = function(value)
    except ERRORS:
        return
    if contract is not None and isinstance(value, np.ndarray):
        converted = contract(value)
        assert not isinstance(converted, type), "accepted what the contract refuses"
        results_equal(result, function(converted))
