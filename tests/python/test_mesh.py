"""The path node's mesh and searches against the node, the file readers and the threads."""

import numpy as np
import pytest

import quillix
from conftest import EXAMPLES, ElementInputs, load_example


def grid(columns, rows):
    """A columns × rows vertex grid of quads."""
    x, y = np.meshgrid(np.arange(columns), np.arange(rows))
    positions = np.stack([x.ravel(), y.ravel(), np.zeros(x.size)], axis=1).astype(np.float32)
    corner = (np.arange(rows - 1)[:, None] * columns + np.arange(columns - 1)).ravel()
    quads = np.stack([corner, corner + 1, corner + columns + 1, corner + columns], axis=1)
    return positions, quads.astype(np.int32)


def test_chain_path_matches_node(host):
    document = load_example("pathfind/fpom.json")
    result = host.eval(document, arrays=False)
    checked = 0
    for request, outcome in zip(document["requests"], result["results"]):
        inputs = ElementInputs(host, request, document)
        mesh = quillix.Mesh(inputs(1020, 0), inputs(1030, 0))
        flags = np.asarray(inputs(1823, 0), dtype=bool)
        blocked = ~flags if flags.size == mesh.vertex_count else None
        paths = next(o for o in outcome["outputs"] if o["port"] == 2020)["values"]
        for element in range(request["elements"]):
            if not inputs(1010, element):
                assert paths[element] == []
                continue
            got = quillix.chain_path(mesh, inputs(1040, element), blocked=blocked)
            assert got.dtype == np.int32 and got.tolist() == paths[element]
            checked += 1
    assert checked >= 8


def test_description_forms_agree():
    positions, quads = grid(4, 3)
    description = np.concatenate([quads, -np.ones((len(quads), 1), np.int32)], axis=1).ravel()
    meshes = [quillix.Mesh(positions, quads), quillix.Mesh(positions, description),
              quillix.Mesh(positions.astype(np.float64), quads.tolist())]
    for mesh in meshes:
        assert (mesh.vertex_count, mesh.polygon_count, mesh.component_count) == (12, 6, 1)
        assert mesh.neighbours(5).tolist() == [1, 4, 6, 9]
        assert quillix.vertex_path(mesh, 0, 11).tolist() == quillix.vertex_path(meshes[0], 0, 11).tolist()


def test_clean_up_renumbers_and_islands():
    positions = np.array([[0, 0, 0], [9, 9, 9], [1, 0, 0], [0, 1, 0], [5, 5, 0], [6, 5, 0], [5, 6, 0]], np.float32)
    mesh = quillix.Mesh(positions, [[0, 2, 3], [4, 5, 6], [0, 0, 2]])  # vertex 1 unused, one invalid polygon
    assert (mesh.vertex_count, mesh.polygon_count, mesh.component_count) == (6, 2, 2)
    assert mesh.components().tolist() == [0, 0, 0, 1, 1, 1]
    assert mesh.positions[3].tolist() == [5, 5, 0]
    with pytest.raises(quillix.KernelError) as error:
        quillix.vertex_path(mesh, 0, 4)
    assert error.value.status == 27 and str(error.value) == quillix.status_message(27, True)


def test_search_failures_raise_kernel_errors():
    mesh = quillix.Mesh(*grid(3, 3))
    for start, end, status in [(0, 0, -2), (0, 9, 6), (-1, 3, 6), (0, 2**40, 6)]:
        with pytest.raises(quillix.KernelError) as error:
            quillix.vertex_path(mesh, start, end)
        assert error.value.status == status
    blocked = np.zeros(9, bool)
    blocked[[1, 4, 7]] = True
    with pytest.raises(quillix.KernelError):
        quillix.vertex_path(mesh, 0, 2, blocked=blocked)
    around = np.zeros(9, bool)
    around[4] = True
    assert 4 not in quillix.vertex_path(mesh, 0, 8, blocked=around).tolist()
    odd = np.zeros(9, np.uint8)
    odd[4] = 2  # NumPy reads any non-zero byte of a bool view as True
    assert 4 not in quillix.vertex_path(mesh, 0, 8, blocked=odd.view(bool)).tolist()
    with pytest.raises(ValueError, match="blocked"):
        quillix.vertex_path(mesh, 0, 2, blocked=np.zeros(4, bool))
    with pytest.raises(IndexError):
        mesh.neighbours(9)


def test_parallel_paths_equal_single_searches():
    mesh = quillix.Mesh(*grid(30, 30))
    rng = np.random.default_rng(7)
    pairs = rng.integers(0, 900, size=(200, 2)).astype(np.int32)
    pairs[0] = (5, 5)
    pairs[1] = (0, 900)
    for threads in (1, 2, 0):
        paths = quillix.vertex_paths(mesh, pairs, threads=threads)
        assert paths[0].size == 0 and paths[1].size == 0
        for k in range(2, 200, 37):
            assert paths[k].tolist() == quillix.vertex_path(mesh, *pairs[k]).tolist()
    assert quillix.vertex_paths(mesh, np.empty((0, 2), np.int32)) == []


@pytest.mark.parametrize("name", ["cube.obj", "pyramid.ply", "prism_binary.ply", "pyramid_and_triangle.gltf"])
def test_read_mesh_feeds_mesh(name):
    positions, polygons = quillix.read_mesh(EXAMPLES / "scenes" / "meshes" / name)
    assert positions.dtype == np.float64 and positions.shape[1] == 3
    assert polygons.dtype == np.int32 and polygons[-1] == -1
    mesh = quillix.Mesh(positions, polygons)
    assert mesh.polygon_count == np.count_nonzero(polygons < 0)


def test_read_mesh_errors_name_the_file(tmp_path):
    with pytest.raises(ValueError, match="cannot open"):
        quillix.read_mesh(tmp_path / "missing.obj")
    bad = tmp_path / "bad.xyz"
    bad.write_text("")
    with pytest.raises(ValueError, match="unknown mesh file type"):
        quillix.read_mesh(bad)
