"""Calls that would need more memory than the machine gives the process are refused with one
ValueError naming the argument, before anything is allocated."""

import subprocess
import sys
import pathlib

import numpy as np
import pytest

import quillix

LINE = np.array([[0, 0, 0], [1, 0, 0], [2, 1, 0]], np.float32)
EYE = np.eye(4, dtype=np.float32)
HUGE = 2**40  # rows no machine holds, declared by broadcasting (nothing stored per row)


@pytest.mark.parametrize("call, name", [
    (lambda: quillix.simplify_polyline(np.broadcast_to(LINE[0], (HUGE, 3))), "points"),
    (lambda: quillix.resample_polyline(np.broadcast_to(LINE[:1].astype(np.float64), (HUGE, 3))),
     "points"),
    (lambda: quillix.spheres_along_spline(LINE, radii=np.broadcast_to(np.float64(1), (HUGE,))),
     "radii"),
    (lambda: quillix.ellipsoid_distance(EYE, np.broadcast_to(EYE, (HUGE, 4, 4))), "tm_b"),
    (lambda: quillix.boxes_intersect(np.broadcast_to(EYE, (HUGE, 4, 4)), EYE), "tm_a"),
    (lambda: quillix.Mesh(LINE, np.broadcast_to(np.int64(0), (10**12,))), "polygons"),
    (lambda: quillix.Mesh(LINE, np.broadcast_to(np.int32(0), (10**12,))), "polygons"),
    (lambda: quillix.to_text(np.broadcast_to(True, (HUGE,))), "value"),
    (lambda: quillix.number_text(np.broadcast_to(np.float32(1), (10**10,))), "value"),
    # The product of the shape overflows once converted: 2^62 bytes become 2^64 floats' bytes.
    (lambda: quillix.simplify_polyline(np.broadcast_to(np.uint8(1), (2**60, 3))), "points"),
])
def test_huge_inputs_are_refused(call, name):
    with pytest.raises(ValueError, match=name + ": .* more memory than the machine gives"):
        call()


def test_huge_pair_lists_are_refused():
    mesh = quillix.Mesh(LINE, [[0, 1, 2]])
    with pytest.raises(ValueError, match="pairs: .* more memory"):
        quillix.vertex_paths(mesh, np.broadcast_to(np.int64(0), (HUGE, 2)))
    with pytest.raises(ValueError, match="blocked: .* more memory"):
        quillix.vertex_path(mesh, 0, 2, blocked=np.broadcast_to(np.int8(0), (HUGE,)).view(bool))


LIMITED = """
import resource, sys
resource.setrlimit(resource.RLIMIT_AS, (6 << 30, resource.RLIM_INFINITY))
import numpy as np
import quillix
line = np.array([[0, 0, 0], [1, 0, 0]], np.float32)
# The node's own rule: a count beyond a 32-bit array size (2^31 - 1 rounds up to 2^31 in float32)
# gives no points.
print(quillix.resample_polyline(line, count=2**31 - 1).shape)
for call in (lambda: quillix.resample_polyline(line, count=2**30),
             lambda: quillix.resample_polyline(line, density=1e9)):
    try:
        call()
    except ValueError as error:
        print(error)
"""


def test_resample_counts_are_held_to_the_process_limit():
    # In a process of its own limited to 6 GiB, so that the answer does not depend on the
    # machine: 2^30 points (12 GiB) and a density of 10^9 per unit are refused.
    package = str(pathlib.Path(quillix.__file__).resolve().parents[1])
    done = subprocess.run([sys.executable, "-c", LIMITED], capture_output=True, text=True,
                          env={"PYTHONPATH": package, "OMP_NUM_THREADS": "1"}, check=False)
    assert done.returncode == 0, done.stderr
    lines = done.stdout.splitlines()
    assert lines[0] == "(0, 3)"
    assert lines[1].startswith("count: 1073741824 items of 12 bytes need more memory")
    assert lines[2].startswith("density: 1000000000 items of 12 bytes need more memory")
    assert len(lines) == 3
