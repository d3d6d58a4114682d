"""The package from several Python threads at once: one shared Mesh searched by every thread,
and the other functions beside it, give exactly what one thread gives."""

from concurrent.futures import ThreadPoolExecutor

import numpy as np

import quillix
from test_mesh import grid

MESH = quillix.Mesh(*grid(70, 70))  # large enough for the searches to release the GIL
RNG = np.random.default_rng(11)
PAIRS = RNG.integers(0, MESH.vertex_count, size=(48, 2)).astype(np.int32)
BLOCKED = RNG.random(MESH.vertex_count) < 0.1
LINES = RNG.normal(size=(48, 3000, 3)).astype(np.float32)
BOXES = RNG.normal(size=(48, 600, 4, 4)).astype(np.float32)


def work(k):
    """Every call a thread may make, on the shared mesh and on inputs of its own."""
    start, end = PAIRS[k]
    blocked = BLOCKED if k % 2 else None
    try:
        path = quillix.vertex_path(MESH, start, end, blocked=blocked).tolist()
    except quillix.KernelError as error:
        path = error.status
    return {
        "path": path,
        "chain": quillix.chain_path(MESH, [start, end, start], blocked=blocked).tolist(),
        "batch": [p.tolist() for p in quillix.vertex_paths(MESH, PAIRS[k:k + 5], blocked, 2)],
        "mesh": (MESH.component_count, MESH.neighbours(int(start)).tolist()),
        "simplified": quillix.simplify_polyline(LINES[k], 0.5).tobytes(),
        "resampled": quillix.resample_polyline(LINES[k], count=4000).tobytes(),
        "boxes": quillix.boxes_contact_time(BOXES[k], BOXES[(k + 1) % 48]).tobytes(),
        "text": quillix.number_text(LINES[k, :, 0], precision=5),
        "distance": quillix.levenshtein_distance("ab" * 40 + str(k), "ba" * 40),
    }


def test_threads_get_what_one_thread_gets():
    alone = [work(k) for k in range(len(PAIRS))]
    with ThreadPoolExecutor(max_workers=4) as pool:
        together = list(pool.map(work, range(len(PAIRS))))
    assert together == alone
    assert sum(isinstance(r["path"], list) for r in alone) > len(PAIRS) // 2
