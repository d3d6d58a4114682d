"""Bad input never crashes the interpreter: wrong shapes and dtypes raise errors naming the
argument, out-of-range vertices raise KernelError, NaN and empty arrays give the node's value."""

import numpy as np
import pytest

import quillix

LINE = np.array([[0, 0, 0], [1, 0.5, 0], [2, 0, 0], [3, 1, 0]], np.float32)
EYE = np.eye(4, dtype=np.float32)
MESH = quillix.Mesh(LINE, [[0, 1, 2], [1, 3, 2]])


@pytest.mark.parametrize("call, error, words", [
    (lambda: quillix.simplify_polyline(LINE[:, :2]), ValueError, r"points: expected an \(N, 3\).*\(4, 2\)"),
    (lambda: quillix.simplify_polyline(LINE.astype(complex)), TypeError, "points: .*complex128"),
    (lambda: quillix.simplify_polyline(LINE > 0), TypeError, "points: .*bool"),
    (lambda: quillix.simplify_polyline([[0, 0], [1]]), TypeError, "points"),
    (lambda: quillix.simplify_polyline("abc"), TypeError, "points"),
    (lambda: quillix.resample_polyline(None), TypeError, "points"),
    (lambda: quillix.resample_polyline(LINE, count=-1), ValueError, "count"),
    (lambda: quillix.resample_polyline(LINE, count=np.nan), ValueError, "count"),
    (lambda: quillix.spheres_along_spline(LINE, radii=[[1.0]]), ValueError, "radii"),
    (lambda: quillix.spheres_along_spline(LINE, interval_indices=[0.5]), TypeError, "interval_indices"),
    (lambda: quillix.ellipsoid_distance(EYE[:3], EYE), ValueError, r"tm_a: .*\(4, 4\)"),
    (lambda: quillix.boxes_intersect(EYE, np.zeros((2, 4, 3))), ValueError, "tm_b"),
    (lambda: quillix.boxes_contact_time(EYE, "x"), TypeError, "tm_b"),
    (lambda: quillix.Mesh(LINE, [0.5, 1.5]), TypeError, "polygons"),
    (lambda: quillix.Mesh(LINE, [[0, -1, 2]]), ValueError, "negative"),
    (lambda: quillix.Mesh(LINE, np.array([0, 1, 2**40], np.int64)), ValueError, "32-bit"),
    (lambda: quillix.Mesh(LINE, [[0, 1, 9]]), quillix.KernelError, "error 92"),
    (lambda: quillix.Mesh(np.empty((0, 3)), []), quillix.KernelError, "error 78"),
    (lambda: quillix.vertex_path(MESH, 0, 3, blocked=[1, 0, 0, 0]), TypeError, "blocked"),
    (lambda: quillix.vertex_paths(MESH, [0, 1, 2]), ValueError, r"pairs: .*\(K, 2\)"),
    (lambda: quillix.vertex_paths(MESH, [[0, 1]], threads=-1), ValueError, "threads"),
    (lambda: quillix.chain_path(MESH, [[0, 1]]), ValueError, "indices"),
    (lambda: quillix.status_message(2**40), ValueError, "code"),
    (lambda: quillix.find_matching_scores(quillix.ObjectFeatures(), [], weights={"nope": 1}), ValueError, "nope"),
    (lambda: quillix.find_matching_scores(quillix.ObjectFeatures(), [], weights=[1, 2]), ValueError, "weights"),
    (lambda: quillix.find_matching_scores(quillix.ObjectFeatures(), [], weights={"name": "x"}), TypeError, r'weights\["name"\]'),
    (lambda: quillix.find_matching_scores(quillix.ObjectFeatures(), [None]), TypeError, r"candidates\[0\]"),
    (lambda: quillix.find_matching_scores(quillix.ObjectFeatures(), np.broadcast_to(np.int8(1), (2**40,))), ValueError, "candidates"),
    (lambda: quillix.join_strings(["a", 3]), TypeError, r"entries\[1\]"),
    (lambda: quillix.join_strings(np.broadcast_to(np.int8(1), (2**40,))), ValueError, "entries"),
    (lambda: setattr(quillix.ObjectFeatures(), "box_extent", [1j, 0, 0]), TypeError, "box_extent"),
    (lambda: setattr(quillix.ObjectFeatures(), "box_extent", [[1, 0, 0]]), ValueError, "box_extent"),
    (lambda: setattr(quillix.TransformParts(), "rotation", np.eye(3) > 0), TypeError, "rotation"),
])
def test_errors_name_the_argument(call, error, words):
    with pytest.raises(error, match=words):
        call()


def test_empty_and_degenerate_inputs_give_the_nodes_values():
    empty = np.empty((0, 3), np.float32)
    assert quillix.simplify_polyline(empty).shape == (0, 3)
    assert quillix.simplify_polyline([], min_three=True).tolist() == [[0, 0, 0]] * 3
    assert quillix.resample_polyline(LINE[:1]).shape == (0, 3)
    assert quillix.spheres_along_spline(LINE[:1]).shape == (0, 4, 4)
    assert quillix.spheres_along_spline(LINE, radii=[]).shape == (0, 4, 4)
    assert quillix.spheres_along_spline(LINE, radii=[-1.0]).shape == (0, 4, 4)
    assert quillix.chain_path(MESH, [2]).size == 0
    assert quillix.chain_path(MESH, [0, 99]).size == 0


def test_nan_flows_through_as_the_cores_define():
    with_nan = LINE.copy()
    with_nan[1] = np.nan
    assert quillix.simplify_polyline(with_nan, epsilon=np.nan).tobytes() == with_nan.tobytes()
    quillix.simplify_polyline(with_nan, 0.1)
    assert quillix.resample_polyline(with_nan, count=3).shape == (3, 3)
    quillix.spheres_along_spline(with_nan, corner_threshold=0.5)
    mesh = quillix.Mesh(with_nan, [[0, 1, 2], [1, 3, 2]])
    quillix.vertex_paths(mesh, [[0, 3], [3, 0]])
    quillix.ellipsoid_distance(np.full((4, 4), np.nan, np.float32), EYE)


def test_thread_counts_beyond_the_pairs_are_capped():
    paths = quillix.vertex_paths(MESH, [[0, 3], [3, 0]], threads=10**6)
    assert [p.tolist() for p in paths] == [quillix.vertex_path(MESH, 0, 3).tolist(),
                                           quillix.vertex_path(MESH, 3, 0).tolist()]
