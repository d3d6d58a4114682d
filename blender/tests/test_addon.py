"""Headless tests of the Quillix add-on in Blender: each operator on a scene built here gives
what the quillix functions give on the same data, and bad situations are answered with a
refused poll or a warning, never an exception.

    blender --background --factory-startup --python-exit-code 1 --python blender/tests/test_addon.py
"""

import os
import sys
import tempfile
import traceback

import bmesh
import bpy
import numpy as np

sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
import quillix_addon  # noqa: E402
from quillix_addon import module_path  # noqa: E402

TESTS = []


def test(function):
    TESTS.append(function)
    return function


def run(operator, **properties):
    """Runs an operator; returns its result and the reports Blender printed for it."""
    with tempfile.TemporaryFile() as captured:
        sys.stdout.flush()
        saved = os.dup(1)
        os.dup2(captured.fileno(), 1)
        try:
            result = operator(**properties)
        finally:
            sys.stdout.flush()
            os.dup2(saved, 1)
            os.close(saved)
        captured.seek(0)
        return result, captured.read().decode()


def refused(operator, expected_warning=None, **properties):
    """True when the operator refuses quietly: its poll fails, or it warns and cancels."""
    if not operator.poll():
        return True
    result, reports = run(operator, **properties)
    ok = result == {"CANCELLED"} and "Warning:" in reports
    return ok and (expected_warning is None or expected_warning in reports)


def empty_scene():
    if bpy.context.object and bpy.context.object.mode != "OBJECT":
        bpy.ops.object.mode_set(mode="OBJECT")
    for collection in (bpy.data.objects, bpy.data.meshes, bpy.data.curves, bpy.data.collections):
        for item in list(collection):
            collection.remove(item)
    bpy.context.scene.frame_set(1)


def add_object(name, data, location=(0.0, 0.0, 0.0)):
    obj = bpy.data.objects.new(name, data)
    obj.location = location
    bpy.context.scene.collection.objects.link(obj)
    bpy.context.view_layer.objects.active = obj
    return obj


def grid_mesh(columns, rows):
    """A grid of quads preceded by one loose vertex, so that Blender's numbering and the
    search's (which drops the loose vertex) differ by one."""
    grid = [(float(x), float(y), 0.0) for y in range(rows) for x in range(columns)]
    positions = [(-1.0, -1.0, 0.0)] + grid
    faces = [
        (v, v + 1, v + columns + 1, v + columns)
        for v in (1 + y * columns + x for y in range(rows - 1) for x in range(columns - 1))
    ]
    mesh = bpy.data.meshes.new("Grid")
    mesh.from_pydata(positions, [], faces)
    return mesh, np.array(positions[1:], np.float32), np.array(faces) - 1


def pick(obj, vertices):
    bm = bmesh.from_edit_mesh(obj.data)
    bm.verts.ensure_lookup_table()
    for v in bm.verts:
        v.select = False
    bm.select_history.clear()
    for i in vertices:
        bm.verts[i].select = True
        bm.select_history.add(bm.verts[i])
    bmesh.update_edit_mesh(obj.data)


def selected_path(obj):
    bm = bmesh.from_edit_mesh(obj.data)
    verts = {v.index for v in bm.verts if v.select}
    edges = {frozenset(v.index for v in e.verts) for e in bm.edges if e.select}
    return verts, edges


@test
def shortest_path_follows_the_picking_order_around_the_blocked_group():
    empty_scene()
    mesh, positions, faces = grid_mesh(7, 6)
    obj = add_object("Grid", mesh)
    wall = obj.vertex_groups.new(name="Wall")
    wall.add([1 + y * 7 + 3 for y in range(5)], 1.0, "REPLACE")  # column 3, open at the top
    picked = [1 + 0 * 7 + 0, 1 + 0 * 7 + 6, 1 + 3 * 7 + 0]
    blocked = np.zeros(len(positions), bool)
    blocked[[y * 7 + 3 for y in range(5)]] = True
    flat = quillix.chain_path(quillix.Mesh(positions, faces), np.array(picked) - 1, blocked) + 1
    # Lifting the flat path's inner vertices by a modifier moves the path elsewhere, as the
    # search sees the evaluated positions.
    lift = obj.vertex_groups.new(name="Lift")
    lift.add([int(v) for v in flat[1:-1] if v not in picked], 1.0, "REPLACE")
    displace = obj.modifiers.new("Lift", "DISPLACE")
    displace.vertex_group, displace.strength, displace.direction = "Lift", 10.0, "Z"
    displace.show_in_editmode = True
    bpy.ops.object.mode_set(mode="EDIT")

    pick(obj, picked)
    result, reports = run(bpy.ops.mesh.quillix_shortest_path, blocked_group="Wall")
    assert result == {"FINISHED"}, reports

    evaluated = obj.evaluated_get(bpy.context.evaluated_depsgraph_get()).to_mesh()
    lifted = np.array([v.co for v in evaluated.vertices], np.float32)[1:]
    expected = quillix.chain_path(quillix.Mesh(lifted, faces), np.array(picked) - 1, blocked) + 1
    assert len(expected) > 0 and not np.array_equal(expected, flat), "the scene must test the lift"
    verts, edges = selected_path(obj)
    assert verts == set(expected.tolist()), (sorted(verts), expected)
    assert edges == {frozenset(p) for p in zip(expected.tolist(), expected[1:].tolist())}
    assert f"{len(expected)} vertices" in reports, reports

    # Running it again on the path it selected gives the same path: the picking order is kept.
    result, _ = run(bpy.ops.mesh.quillix_shortest_path, blocked_group="Wall")
    assert result == {"FINISHED"} and selected_path(obj)[0] == verts


@test
def shortest_path_refuses_bad_situations():
    empty_scene()
    assert not bpy.ops.mesh.quillix_shortest_path.poll(), "no mesh at all"
    mesh, _, _ = grid_mesh(4, 4)
    obj = add_object("Grid", mesh)
    obj.vertex_groups.new(name="Wall").add([1 + 4 * 2 + x for x in range(4)], 1.0, "REPLACE")
    assert not bpy.ops.mesh.quillix_shortest_path.poll(), "object mode"
    bpy.ops.object.mode_set(mode="EDIT")
    pick(obj, [1])
    assert refused(bpy.ops.mesh.quillix_shortest_path, "two vertices"), "one picked vertex"
    pick(obj, [1, 16])
    assert refused(bpy.ops.mesh.quillix_shortest_path, "path not found", blocked_group="Wall")
    pick(obj, [0, 16])
    assert refused(bpy.ops.mesh.quillix_shortest_path, "belongs to no face"), "loose vertex"
    pick(obj, [1, 16])
    assert refused(bpy.ops.mesh.quillix_shortest_path, "No vertex group", blocked_group="Nope")


def curve_object(name, splines):
    """A curve object from (type, points, cyclic) triples."""
    curve = bpy.data.curves.new(name, "CURVE")
    curve.dimensions = "3D"
    for kind, points, cyclic in splines:
        spline = curve.splines.new(kind)
        collection = spline.bezier_points if kind == "BEZIER" else spline.points
        collection.add(len(points) - 1)
        for point, co in zip(collection, points):
            point.co = co if kind == "BEZIER" else (*co, 1.0)
        spline.use_cyclic_u = cyclic
    return add_object(name, curve)


def wiggle(count, amplitude, phase=0.0):
    x = np.linspace(0.0, 10.0, count, dtype=np.float32)
    return np.stack([x, amplitude * np.sin(x * 1.7 + phase), 0.1 * x], axis=1).astype(np.float32)


def points_of(spline):
    return quillix_addon.blender_data.spline_points(spline)


@test
def curve_operators_write_what_the_polyline_functions_give():
    empty_scene()
    poly, bezier = wiggle(40, 0.3), wiggle(25, 1.0, 0.5)
    nurbs = [(0, 0, 0), (1, 2, 0), (2, 0, 0), (3, 2, 0)]
    obj = curve_object(
        "Wiggle", [("POLY", poly, False), ("NURBS", nurbs, False), ("BEZIER", bezier, True)]
    )

    result, reports = run(bpy.ops.object.quillix_simplify, epsilon=0.25)
    assert result == {"FINISHED"}, reports
    splines = obj.data.splines
    assert [s.type for s in splines] == ["POLY", "NURBS", "BEZIER"], "order and types kept"
    assert np.array_equal(points_of(splines[0]), quillix.simplify_polyline(poly, 0.25, False))
    assert np.array_equal(points_of(splines[2]), quillix.simplify_polyline(bezier, 0.25, True))
    assert splines[2].use_cyclic_u and len(splines[1].points) == 4
    assert "NURBS splines left" in reports

    original = [points_of(s) for s in splines]
    for properties, spacing in (
        ({"count": 12}, {"count": 12}),
        ({"mode": "DENSITY", "density": 2.5}, {"density": 2.5}),
    ):
        bpy.context.view_layer.objects.active = obj
        result, _ = run(
            bpy.ops.object.quillix_resample, new_object=True, smooth_strength=0.5, **properties
        )
        copy = bpy.context.active_object
        assert result == {"FINISHED"} and copy is not obj
        assert copy.name.startswith("Wiggle Resampled")
        for index in (0, 2):
            before, spline = original[index], copy.data.splines[index]
            expected = quillix.resample_polyline(before, **spacing, smooth_strength=0.5)
            assert np.array_equal(points_of(spline), expected), (properties, spline.type)
            assert np.array_equal(points_of(obj.data.splines[index]), before), "original kept"


@test
def curve_operators_refuse_bad_situations():
    empty_scene()
    assert not bpy.ops.object.quillix_simplify.poll(), "no active object"
    mesh, _, _ = grid_mesh(3, 3)
    add_object("Grid", mesh)
    for operator in (bpy.ops.object.quillix_simplify, bpy.ops.object.quillix_resample,
                     bpy.ops.object.quillix_spheres_along_curve):
        assert not operator.poll(), "a mesh is not a curve"
    add_object("Empty", bpy.data.curves.new("Empty", "CURVE"))
    for operator in (bpy.ops.object.quillix_simplify, bpy.ops.object.quillix_resample,
                     bpy.ops.object.quillix_spheres_along_curve):
        assert refused(operator, "no poly or Bézier spline"), operator
    curve_object("Line", [("POLY", [(0, 0, 0), (1, 0, 0)], False)])
    assert refused(bpy.ops.object.quillix_spheres_along_curve, "Radii", radii="0.5, x")
    assert refused(bpy.ops.object.quillix_spheres_along_curve, "No sphere fits", radii="5",
                   corner_threshold=0.0)


def sphere_objects():
    spheres = [o for o in bpy.data.objects if "quillix_corner" in o.keys()]
    return sorted(spheres, key=lambda o: o.name)


@test
def spheres_sit_where_the_distribution_puts_them():
    empty_scene()
    line = curve_object("Line", [("POLY", [(0, 0, 0), (10, 0, 0)], False)])
    result, _ = run(bpy.ops.object.quillix_spheres_along_curve, corner_threshold=0.0, kind="EMPTY")
    assert result == {"FINISHED"}
    centres = [round(o.matrix_world.translation.x, 5) for o in sphere_objects()]
    assert centres == [1.0, 3.0, 5.0, 7.0, 9.0], centres

    empty_scene()
    zigzag = [(0, 0, 0), (3, 0, 0), (3, 4, 0), (6, 4, 1), (9, 0, 1)]
    curve = curve_object("Zigzag", [("POLY", zigzag, False), ("BEZIER", wiggle(12, 0.5), False)])
    curve.location, curve.rotation_euler, curve.scale = (1, 2, 3), (0.3, 0.0, 0.8), (2, 2, 2)
    properties = dict(radii="0.3, 0.5, 0.4", corner_threshold=0.5, corner_scale=1.5, alignment="2",
                      distribution="1", seed=7)
    result, reports = run(bpy.ops.object.quillix_spheres_along_curve, **properties)
    assert result == {"FINISHED"}, reports
    bpy.context.view_layer.update()
    records = np.concatenate([
        quillix.spheres_along_spline(
            points_of(s), up_vectors=np.tile((0, 0, 1), (len(points_of(s)), 1)),
            radii=[0.3, 0.5, 0.4], corner_threshold=0.5, corner_scale=1.5, alignment=2,
            distribution=1, random_seed=7,
        )
        for s in curve.data.splines
    ])
    spheres = sphere_objects()
    assert len(spheres) == len(records) and np.any(records[:, 3, 3] == 1.0), len(spheres)
    world = np.array(curve.matrix_world)
    for sphere, record in zip(spheres, records):
        local = np.eye(4)
        local[:3, :3] = record[:3, :3].T * record[0, 3]
        local[:3, 3] = record[3, :3]
        assert np.allclose(np.array(sphere.matrix_world), world @ local, atol=1e-5), sphere.name
        assert sphere["quillix_radius_index"] == int(record[2, 3])
        assert sphere["quillix_corner"] == (record[3, 3] == 1.0)
    assert sphere.data is spheres[0].data and sphere.data.name.startswith("Zigzag Sphere")


def box(name, size, location=(0, 0, 0), rotation=(0, 0, 0), offset=(0, 0, 0)):
    """A box mesh of `size` whose centre is `offset` from its origin."""
    bm = bmesh.new()
    bmesh.ops.create_cube(bm, size=1.0)
    bmesh.ops.scale(bm, vec=size, verts=bm.verts)
    bmesh.ops.translate(bm, vec=offset, verts=bm.verts)
    mesh = bpy.data.meshes.new(name)
    bm.to_mesh(mesh)
    bm.free()
    obj = add_object(name, mesh, location)
    obj.rotation_euler = rotation
    return obj


def box_features(name, size, location):
    """The matching features of an unrotated box, worked out by hand."""
    f = quillix.ObjectFeatures()
    f.name, f.point_count, f.triangle_count = name, 8, 12
    a, b, c = (float(s) for s in size)
    f.box_extent = size
    f.sphere_radius = float(np.sqrt(a / 2 * (a / 2) + b / 2 * (b / 2) + c / 2 * (c / 2)))
    f.local_surface_area = f.global_surface_area = 2 * (a * b + b * c + c * a)
    f.global_vertex_center = location
    for parts in (f.local_transform, f.global_transform):
        parts.translation = location
    return f


@test
def matching_features_of_a_turned_open_box():
    """An open box (no top face), off its origin, turned, scaled and moved: every feature
    worked out by hand."""
    empty_scene()
    (a, b, c), offset, scale, location = (2.0, 1.0, 3.0), np.array([0.5, -1.0, 0.25]), 2.0, (1, 2, 3)
    obj = box("Open", (a, b, c), location, (0, 0, np.pi / 2), offset)
    obj.scale = (scale,) * 3
    bm = bmesh.new()
    bm.from_mesh(obj.data)
    bmesh.ops.delete(bm, geom=[f for f in bm.faces if f.normal.z > 0.5], context="FACES_ONLY")
    bm.to_mesh(obj.data)
    bm.free()
    bpy.context.view_layer.update()
    f = quillix_addon.matching.object_features(quillix, obj, bpy.context.evaluated_depsgraph_get())

    turn = np.array([[0.0, -1.0, 0.0], [1.0, 0.0, 0.0], [0.0, 0.0, 1.0]])  # column vectors
    # Five faces of six triangle corners each: the bottom's pulls the averages down.
    centre, normal = offset + (0, 0, -c / 10), np.array([0.0, 0.0, -0.2])
    area = a * b + 2 * b * c + 2 * c * a
    assert (f.point_count, f.triangle_count) == (8, 10)
    assert np.allclose(f.box_extent, (a, b, c))
    assert np.isclose(f.sphere_radius, np.linalg.norm((a / 2, b / 2, c / 2)))
    assert np.isclose(f.local_surface_area, area)
    assert np.isclose(f.global_surface_area, scale * scale * area)
    assert np.allclose(f.global_vertex_center, location + scale * turn @ centre)
    assert np.allclose(f.local_normal_average, normal)
    assert np.allclose(f.global_normal_average, scale * turn @ normal)
    for parts in (f.local_transform, f.global_transform):
        assert np.allclose(parts.translation, location) and np.allclose(parts.scaling, scale)
        assert np.allclose(parts.rotation, turn.T, atol=1e-6), "rows are the turned axes"


@test
def similar_objects_rank_as_the_matching_function():
    empty_scene()
    layout = {"Crate": ((2, 1, 1), (0, 0, 0)), "Crate Twin": ((2, 1, 1), (5, 0, 0)),
              "Cube": ((1, 1, 1), (0, 4, 0)), "Plank": ((3, 1, 0.5), (0, -4, 2)),
              "Big Crate": ((4, 2, 2), (8, 8, 0)), "Hidden": ((2, 1, 1), (-6, 0, 0))}
    objects = {name: box(name, size, location) for name, (size, location) in layout.items()}
    objects["Hidden"].hide_set(True)
    bpy.context.view_layer.objects.active = objects["Crate"]
    names = ["Crate Twin", "Cube", "Plank", "Big Crate"]
    assert [k for k, _, _ in quillix_addon.matching.WEIGHTS] == quillix.MATCH_WEIGHT_NAMES

    for weights in ({}, {"name": 1.0, "global_pos": 0.5, "bounding_box": 0.0}):
        result, reports = run(bpy.ops.object.quillix_select_similar, count=2,
                              **{"weight_" + k: v for k, v in weights.items()})
        assert result == {"FINISHED"}, reports
        ranking = quillix.find_matching_scores(box_features("Crate", *layout["Crate"]),
                                               [box_features(n, *layout[n]) for n in names],
                                               weights=weights or None, num_out=2)
        ranked = [names[i] for i in ranking["order"]]
        assert {o.name for o in bpy.context.selected_objects} == set(ranked[:2]), (weights, ranked)
        lines = bpy.data.texts["Quillix Matches"].as_string().splitlines()[1:]
        listed = [(line.split("%", 1)[1].strip(), float(line.split("%")[0])) for line in lines]
        assert listed == [(n, round(p, 2)) for n, p in zip(ranked, ranking["percentages"])], listed
        assert f"{ranked[0]} {ranking['percentages'][0]:.2f}%" in reports, reports


@test
def similar_objects_refuse_bad_situations():
    empty_scene()
    assert not bpy.ops.object.quillix_select_similar.poll(), "no active object"
    curve_object("Line", [("POLY", [(0, 0, 0), (1, 0, 0)], False)])
    assert not bpy.ops.object.quillix_select_similar.poll(), "a curve is not a mesh"
    box("Alone", (1, 1, 1))
    assert refused(bpy.ops.object.quillix_select_similar, "No other mesh"), "nothing to compare"
    box("Other", (1, 1, 1), (3, 0, 0))
    bpy.context.view_layer.objects.active = bpy.data.objects["Alone"]
    zero = {"weight_" + k: 0.0 for k, _, _ in quillix_addon.matching.WEIGHTS}
    assert refused(bpy.ops.object.quillix_select_similar, "All weights are zero", **zero)


def row_box(size, location, rotation_z=0.0, offset=(0, 0, 0)):
    """The box's matrix as the test builds it: unit cube → half size → offset → rotation about
    Z → location, in the row-vector convention."""
    c, s = np.cos(rotation_z), np.sin(rotation_z)
    m = np.diag([*(np.array(size) / 2), 1.0])
    m[3, :3] = offset
    turn = np.eye(4)
    turn[:2, :2] = [[c, s], [-s, c]]
    move = np.eye(4)
    move[3, :3] = location
    return (m @ turn @ move).astype(np.float32)


@test
def box_contacts_select_the_pairs_the_box_tests_find():
    empty_scene()
    layout = {  # size, location, rotation about Z, centre of the mesh
        "A": ((2, 2, 2), (0, 0, 0), 0.0, (0, 0, 0)),
        "Touch": ((2, 2, 2), (2, 0, 0), 0.0, (0, 0, 0)),
        "Turned": ((2, 2, 2), (-1.75, 1.75, 0), np.pi / 4, (0, 0, 0)),
        "Shifted": ((1, 3, 1), (0.2, -2.8, 0), 0.3, (0.5, 0.25, 0)),  # touches A by its offset
        "Far": ((1, 1, 1), (20, 0, 0), 0.0, (0, 0, 0)),
    }
    objects = [box(n, size, loc, (0, 0, rz), off) for n, (size, loc, rz, off) in layout.items()]
    matrices = np.stack([row_box(*box_args) for box_args in layout.values()])
    pairs = np.array([(a, b) for a in range(5) for b in range(a + 1, 5)])
    touched_by_mode = []
    for mode in ("-1", "0", "1"):
        for obj in objects:
            obj.select_set(True)
        result, reports = run(bpy.ops.object.quillix_box_contacts, mode=mode)
        assert result == {"FINISHED"}, reports
        hits = quillix.boxes_intersect(matrices[pairs[:, 0]], matrices[pairs[:, 1]], int(mode))
        expected = {objects[i].name for i in pairs[hits].ravel()}
        assert {o.name for o in objects if o.select_get()} == expected, (mode, expected)
        touched_by_mode.append(expected)
    assert "Turned" in touched_by_mode[0] and "Turned" not in touched_by_mode[1], touched_by_mode
    assert all("Shifted" in touched for touched in touched_by_mode), touched_by_mode

    # In motion: "Runner" crosses "A" between frames 1 and 11; "Away" leaves "Far" behind.
    runner = box("Runner", (2, 2, 2), (10, 0, 0))
    away = box("Away", (1, 1, 1), (22, 0, 0))
    for obj, start, end in ((runner, (10, 0, 0), (-10, 0, 0)), (away, (22, 0, 0), (30, 0, 0))):
        for frame, location in ((1, start), (11, end)):
            obj.location = location
            obj.keyframe_insert("location", frame=frame)
    bpy.context.scene.frame_set(1)
    moving = [objects[0], runner, objects[4], away]
    packed = np.stack([row_box((2, 2, 2), (0, 0, 0)), row_box((2, 2, 2), (10, 0, 0)),
                       row_box((1, 1, 1), (20, 0, 0)), row_box((1, 1, 1), (22, 0, 0))])
    packed[1, :3, 3], packed[3, :3, 3] = (-20, 0, 0), (8, 0, 0)
    for obj in bpy.data.objects:
        obj.select_set(obj in moving)
    result, reports = run(
        bpy.ops.object.quillix_box_contacts, motion=True, frame_start=1, frame_end=11
    )
    assert result == {"FINISHED"}, reports
    pairs = np.array([(a, b) for a in range(4) for b in range(a + 1, 4)])
    times = quillix.boxes_contact_time(packed[pairs[:, 0]], packed[pairs[:, 1]], 0)
    hit = (times >= 0) & (times <= 1)
    assert np.count_nonzero(hit) == 1, times
    expected = {moving[i].name for i in pairs[hit].ravel()}
    assert {o.name for o in moving if o.select_get()} == expected, (expected, times)
    for obj in bpy.data.objects:
        obj.select_set(False)
    objects[0].select_set(True)
    assert refused(bpy.ops.object.quillix_box_contacts, "at least two"), "one selected object"


def main():
    global quillix
    # The module under test comes first, ahead of any installed one.
    for folder in reversed(os.environ.get("QUILLIX_PYTHONPATH", "").split(os.pathsep)):
        if folder:
            sys.path.insert(0, folder)
    quillix_addon.register()
    quillix, message = module_path.load()
    if quillix is None:
        print(message)
        sys.exit(1)
    print(f"quillix from {quillix.__file__}")
    failed = 0
    for function in TESTS:
        try:
            function()
            print(f"PASS {function.__name__}")
        except Exception:
            failed += 1
            print(f"FAIL {function.__name__}")
            traceback.print_exc()
    quillix_addon.unregister()
    print(f"blender add-on: {len(TESTS) - failed} passed, {failed} failed")
    sys.stdout.flush()
    if failed:
        sys.exit(1)


main()
