"""Per-call overhead of the quillix Python binding against the C++ core, measured in one run.

Runs python_core_calls_bench (the same core calls with the same inputs, timed in C++) and
times the binding with timeit, then prints both and the difference per call, and what a blocked
mask adds to a search of the 10^6-vertex grid Mesh. Then times vertex_paths on many pairs of
that Mesh with 1 and 2 threads.

    PYTHONPATH=build/release/python /usr/bin/python3 bench/python/binding_overhead.py \
        [--build build/release] [--pairs 10000]

OMP_NUM_THREADS is set to 1 before quillix is imported, so that the vectorised box test runs
on one thread like the C++ loop it is compared with (vertex_paths takes its own thread count).
"""

import argparse
import json
import os
import pathlib
import subprocess
import sys
import time
import timeit

os.environ.setdefault("OMP_NUM_THREADS", "1")

import numpy as np  # noqa: E402

import quillix  # noqa: E402


def wave(count):
    i = np.arange(count, dtype=np.float64)
    return np.stack([0.01 * i, np.sin(0.1 * i), np.zeros(count)], axis=1).astype(np.float32)


def boxes(count):
    m = np.zeros((count, 4, 4), np.float32)
    scale = 1.0 + (np.arange(count) % 7) / 7.0
    for r in range(3):
        m[:, r, r] = scale
    m[:, 3, 0] = np.fmod(0.37 * np.arange(count), 20.0)
    m[:, 3, 3] = 1.0
    return m


def grid(side):
    x, y = np.meshgrid(np.arange(side), np.arange(side))
    positions = np.stack([x.ravel(), y.ravel(), np.zeros(x.size)], axis=1).astype(np.float32)
    corner = (np.arange(side - 1)[:, None] * side + np.arange(side - 1)).ravel()
    quads = np.stack([corner, corner + 1, corner + side + 1, corner + side], axis=1)
    return positions, quads.astype(np.int32)


def per_call(function, budget=0.5):
    """Seconds per call: the best of five runs of enough calls to fill `budget`."""
    timer = timeit.Timer(function)
    number, _ = timer.autorange()
    number = max(1, int(number * budget / 0.2))
    return min(timer.repeat(repeat=5, number=number)) / number


def core_times(build):
    program = pathlib.Path(build) / "bin" / "python_core_calls_bench"
    done = subprocess.run([program, "--benchmark_format=json", "--benchmark_min_time=0.3"],
                          capture_output=True, text=True, check=True)
    return {b["name"]: b["real_time"] * {"ns": 1e-9, "us": 1e-6, "ms": 1e-3}[b["time_unit"]]
            for b in json.loads(done.stdout)["benchmarks"]}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", default="build/release")
    parser.add_argument("--pairs", type=int, default=10000)
    args = parser.parse_args()

    small_line, large_line, long_line = wave(8), wave(100000), wave(1000000)
    unit, small_boxes, large_boxes = np.eye(4, dtype=np.float32), boxes(1), boxes(1000000)
    small_mesh, large_mesh = quillix.Mesh(*grid(10)), quillix.Mesh(*grid(1000))
    cases = [
        ("BM_SimplifyPolyline/8", lambda: quillix.simplify_polyline(small_line, 0.05)),
        ("BM_SimplifyPolyline/100000", lambda: quillix.simplify_polyline(large_line, 0.05)),
        ("BM_ResamplePolyline/8", lambda: quillix.resample_polyline(small_line, count=8)),
        ("BM_ResamplePolyline/1000000",
         lambda: quillix.resample_polyline(long_line, count=1000000)),
        ("BM_BoxesIntersect/1", lambda: quillix.boxes_intersect(unit, small_boxes[0])),
        ("BM_BoxesIntersect/1000000", lambda: quillix.boxes_intersect(unit, large_boxes)),
        ("BM_VertexPath/10", lambda: quillix.vertex_path(small_mesh, 55, 65)),
        ("BM_VertexPath/1000", lambda: quillix.vertex_path(large_mesh, 500500, 500510)),
    ]
    core = core_times(args.build)
    print("%-30s %12s %12s %12s %8s" % ("case", "core", "binding", "overhead", "ratio"))
    for name, call in cases:
        binding = per_call(call)
        print("%-30s %10.3f us %10.3f us %10.3f us %7.3fx" % (
            name, core[name] * 1e6, binding * 1e6, (binding - core[name]) * 1e6,
            binding / core[name]))

    # A blocked mask costs one pass over it per search (its inversion into the search's flags).
    mask = np.zeros(large_mesh.vertex_count, bool)
    free = per_call(lambda: quillix.vertex_path(large_mesh, 500500, 500510))
    masked = per_call(lambda: quillix.vertex_path(large_mesh, 500500, 500510, blocked=mask))
    print("vertex_path on %d vertices: %.3f us, with a blocked mask %.3f us (%.2fx)" % (
        large_mesh.vertex_count, free * 1e6, masked * 1e6, masked / free))

    rng = np.random.default_rng(1)
    starts = rng.integers(0, large_mesh.vertex_count - 20, size=args.pairs)
    pairs = np.stack([starts, starts + 10], axis=1).astype(np.int32)
    seconds = {}
    for threads in (1, 2):
        begin = time.perf_counter()
        quillix.vertex_paths(large_mesh, pairs, threads=threads)
        seconds[threads] = time.perf_counter() - begin
    print("vertex_paths, %d pairs on %d vertices: 1 thread %.2f s, 2 threads %.2f s, "
          "speed-up %.2f (%d cores)" % (args.pairs, large_mesh.vertex_count, seconds[1],
                                        seconds[2], seconds[1] / seconds[2], os.cpu_count()))


if __name__ == "__main__":
    sys.exit(main())
