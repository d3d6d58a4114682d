"""The five-minute tour of docs/python.md: read a mesh file, find a path between two
vertices, simplify a polyline, test two boxes."""

import pathlib

import numpy as np

import quillix

meshes = pathlib.Path(__file__).resolve().parents[1] / "scenes" / "meshes"

# A mesh file, with the file's own vertex numbering, built once into a searchable Mesh.
positions, polygons = quillix.read_mesh(meshes / "cube.obj")
mesh = quillix.Mesh(positions, polygons)
print(mesh, "- neighbours of vertex 0:", mesh.neighbours(0))

# The shortest path between two opposite corners, then one that may not use vertex 1.
path = quillix.vertex_path(mesh, 0, 7)
print("path 0 -> 7:", path)
blocked = np.zeros(mesh.vertex_count, dtype=bool)
blocked[path[1]] = True
print("path 0 -> 7 avoiding vertex", path[1], ":", quillix.vertex_path(mesh, 0, 7, blocked=blocked))
try:
    quillix.vertex_path(mesh, 0, 0)
except quillix.KernelError as error:
    print("same vertex:", error.status, error)

# A noisy polyline simplified to a tolerance of 0.1, then resampled to 6 smoothed points.
x = np.linspace(0.0, 4.0, 41, dtype=np.float32)
line = np.stack([x, 0.02 * np.sin(25.0 * x) + (x > 2.0) * (x - 2.0), np.zeros_like(x)], axis=1)
print("simplified:\n", quillix.simplify_polyline(line, epsilon=0.1))
print("resampled:\n", quillix.resample_polyline(line, count=6))

# Two unit boxes, the second moved along x: touching, then apart.
a = np.eye(4, dtype=np.float32)
b = np.repeat(a[None], 2, axis=0)
b[:, 3, 0] = [2.0, 2.5]
print("boxes intersect:", quillix.boxes_intersect(a, b))
print("ellipsoid gaps:", quillix.ellipsoid_distance(a, b))
