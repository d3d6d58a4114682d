#!/usr/bin/python3
"""End-to-end cost of `quillix eval` on two large requests, from JSON text to JSON result.

Writes into build/bench/ a Quillix_slins request of one 10^6-point line and a Quillix_fpom
request on a 1000 x 1000-vertex grid mesh with a few short paths, runs `quillix eval` on each
and prints, per request, the child's CPU seconds and peak resident set (GNU time, /usr/bin/time)
next to the size of the request file and the bytes of its arrays as the node reads them (the
floor any decoding has to touch), so that work on reading requests can be measured against it.
The peak resident set of an idle `quillix eval` (a one-element request: the executable, its
libraries and the plug-in loaded) is measured in the same run, and each request's peak above it
is given as a multiple of its arrays.

    bench/end_to_end.py [--quillix build/release/bin/quillix] [--out build/bench] [--runs 3]
"""
import argparse
import os
import random
import statistics
import subprocess
import sys
import tempfile

FLOAT3 = 12  # bytes of one 3-vector of floats
INT = 4


def write_slins(path, points):
    rnd = random.Random(3)
    x = y = 0.0
    with open(path, "w") as f:
        f.write('{"requests": [{"node": "Quillix_slins", "port": 2010, "elements": 1, "inputs": {\n')
        f.write('"1010": {"structure": "array", "type": "vector3", "values": [[')
        for i in range(points):
            x += 0.01
            y += rnd.uniform(-0.01, 0.01)
            f.write("%s[%.6g,%.6g,0]" % ("," if i else "", x, y))
        f.write(']]},\n"1020": {"type": "float", "values": [0.005]}}}]}\n')
    return points * FLOAT3


def write_fpom(path, side, paths):
    vertices = side * side
    with open(path, "w") as f:
        f.write('{"requests": [{"node": "Quillix_fpom", "port": [2010, 2020], "elements": %d,\n'
                % len(paths))
        f.write('"inputs": {\n"1020": {"structure": "array", "type": "vector3", '
                '"constant": true, "values": [[')
        f.write(",".join("[%d,%d,0]" % (i % side, i // side) for i in range(vertices)))
        f.write(']]},\n"1030": {"structure": "array", "type": "int", "constant": true, '
                '"values": [[')
        description = 0
        rows = []
        for j in range(side - 1):
            row = []
            for i in range(side - 1):
                v = j * side + i
                row.append("%d,%d,%d,%d,-2" % (v, v + 1, v + side + 1, v + side))
            rows.append(",".join(row))
            description += 5 * (side - 1)
        f.write(",".join(rows))
        f.write(']]},\n"1040": {"structure": "array", "type": "int", "values": [%s]}}}]}\n'
                % ",".join("[%d,%d]" % p for p in paths))
    return vertices * FLOAT3 + description * INT + 2 * len(paths) * INT


def write_idle(path):
    with open(path, "w") as f:
        f.write('{"requests": [{"node": "Quillix_divi", "port": 2010, "inputs": '
                '{"1010": {"type": "int", "values": [7]}}}]}\n')
    return 0


def run(quillix, request):
    """CPU seconds and peak RSS (MiB) of one `quillix eval` child.

    GNU time starts the child: a child forked from this Python process would count Python's own
    resident set as its peak (the high-water mark survives exec).
    """
    with tempfile.NamedTemporaryFile("r") as report, open(os.devnull, "wb") as sink:
        status = subprocess.call(["/usr/bin/time", "-o", report.name, "-f", "%U %S %M",
                                  quillix, "eval", request], stdout=sink)
        if status != 0:
            sys.exit("quillix eval %s failed with status %d" % (request, status))
        user, system, kib = report.read().split()[-3:]
    return float(user) + float(system), int(kib) / 1024.0


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--quillix", default="build/release/bin/quillix")
    parser.add_argument("--out", default="build/bench")
    parser.add_argument("--runs", type=int, default=3)
    args = parser.parse_args()
    os.makedirs(args.out, exist_ok=True)
    side = 1000
    centre = (side // 2) * side + side // 2
    cases = [
        ("slins_1M_points.json", lambda p: write_slins(p, 1000000)),
        ("fpom_1M_vertices.json",
         lambda p: write_fpom(p, side, [(centre, centre + 3), (centre + 5 * side, centre + 7),
                                        (0, 2 * side + 2)])),
    ]
    idle_path = os.path.join(args.out, "idle.json")
    write_idle(idle_path)
    idle = statistics.median(run(args.quillix, idle_path)[1] for _ in range(args.runs))
    print("idle quillix eval: peak RSS %.1f MiB" % idle)
    print("%-24s %10s %12s %8s %14s %18s" % (
        "request", "file MB", "arrays MB", "CPU s", "peak RSS MiB", "above idle/arrays"))
    for name, write in cases:
        path = os.path.join(args.out, name)
        arrays = write(path)
        results = [run(args.quillix, path) for _ in range(args.runs)]
        rss = statistics.median(r[1] for r in results)
        print("%-24s %10.1f %12.1f %8.2f %14.1f %17.2fx" % (
            name, os.path.getsize(path) / 1e6, arrays / 1e6,
            statistics.median(r[0] for r in results), rss,
            (rss - idle) * 1024 * 1024 / arrays))


if __name__ == "__main__":
    main()
