"""Renders the pictures of docs/blender.md headless, each from a scene built here and an
operator of the add-on run on it:

    blender --background --factory-startup --python blender/tests/render_docs.py

docs/images/blender_path.png: "Quillix Shortest Path" on a grid with a hill and a blocked
wall; docs/images/blender_spheres.png: "Quillix Spheres Along Curve". Cycles on the CPU with
denoising off (Debian's Blender has no denoiser), few samples and a small frame.
"""

import math
import os
import sys

import bmesh
import bpy
import numpy as np

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(ROOT, "blender"))
import quillix_addon  # noqa: E402

IMAGES = os.path.join(ROOT, "docs", "images")


def clear_scene():
    if bpy.context.object and bpy.context.object.mode != "OBJECT":
        bpy.ops.object.mode_set(mode="OBJECT")
    for collection in (bpy.data.objects, bpy.data.meshes, bpy.data.curves, bpy.data.materials,
                       bpy.data.collections, bpy.data.cameras, bpy.data.lights):
        for item in list(collection):
            collection.remove(item)


def material(name, colour, roughness=0.5):
    mat = bpy.data.materials.new(name)
    mat.use_nodes = True
    shader = mat.node_tree.nodes["Principled BSDF"]
    shader.inputs["Base Color"].default_value = (*colour, 1.0)
    shader.inputs["Roughness"].default_value = roughness
    return mat


def link(obj, mat=None):
    bpy.context.scene.collection.objects.link(obj)
    if mat is not None:
        obj.data.materials.append(mat)
    return obj


def tube(name, segments, radius, mat):
    """A curve object with one beveled poly spline per point list."""
    curve = bpy.data.curves.new(name, "CURVE")
    curve.dimensions, curve.bevel_depth, curve.bevel_resolution = "3D", radius, 3
    for points in segments:
        spline = curve.splines.new("POLY")
        spline.points.add(len(points) - 1)
        for point, co in zip(spline.points, points):
            point.co = (*co, 1.0)
    return link(bpy.data.objects.new(name, curve), mat)


def marker(name, location, radius, mat):
    bm = bmesh.new()
    bmesh.ops.create_uvsphere(bm, u_segments=16, v_segments=8, radius=radius)
    mesh = bpy.data.meshes.new(name)
    bm.to_mesh(mesh)
    bm.free()
    for polygon in mesh.polygons:
        polygon.use_smooth = True
    obj = link(bpy.data.objects.new(name, mesh), mat)
    obj.location = location
    return obj


def stage(camera_location, target, lens=35.0):
    """Camera, sun, a soft world and Cycles settings that render in seconds on the CPU."""
    scene = bpy.context.scene
    camera = bpy.data.objects.new("Camera", bpy.data.cameras.new("Camera"))
    camera.data.lens = lens
    camera.location = camera_location
    direction = np.subtract(target, camera_location)
    camera.rotation_euler = (
        math.atan2(math.hypot(direction[0], direction[1]), -direction[2]),
        0.0,
        math.atan2(direction[1], direction[0]) - math.pi / 2,
    )
    scene.collection.objects.link(camera)
    scene.camera = camera
    sun = bpy.data.objects.new("Sun", bpy.data.lights.new("Sun", "SUN"))
    sun.data.energy, sun.data.angle = 3.0, 0.2
    sun.rotation_euler = (0.6, 0.2, 0.8)
    scene.collection.objects.link(sun)
    world = scene.world or bpy.data.worlds.new("World")
    scene.world = world
    world.use_nodes = True
    world.node_tree.nodes["Background"].inputs["Color"].default_value = (0.8, 0.85, 0.9, 1.0)
    world.node_tree.nodes["Background"].inputs["Strength"].default_value = 0.6
    scene.render.engine = "CYCLES"
    scene.cycles.device = "CPU"
    scene.cycles.samples = 16
    scene.cycles.use_denoising = False
    scene.view_layers[0].cycles.use_denoising = False
    scene.render.resolution_x, scene.render.resolution_y = 480, 320
    scene.render.resolution_percentage = 100
    scene.render.image_settings.file_format = "PNG"
    scene.view_settings.view_transform = "Standard"


def render(name):
    bpy.context.scene.render.filepath = os.path.join(IMAGES, name)
    bpy.ops.render.render(write_still=True)
    print(f"rendered {bpy.context.scene.render.filepath}")


def path_picture():
    """A 24 × 16 grid with a hill in the middle and a wall (the blocked group) with one gap;
    the path runs through three picked vertices, around the hill and through the gap."""
    clear_scene()
    columns, rows = 24, 16
    positions = []
    for y in range(rows):
        for x in range(columns):
            px, py = x * 0.5 - 5.75, y * 0.5 - 3.75
            positions.append((px, py, 1.6 * math.exp(-((px + 1.5) ** 2 + py ** 2) / 2.0)))
    faces = [
        (v, v + 1, v + columns + 1, v + columns)
        for v in (y * columns + x for y in range(rows - 1) for x in range(columns - 1))
    ]
    mesh = bpy.data.meshes.new("Terrain")
    mesh.from_pydata(positions, [], faces)
    terrain = link(bpy.data.objects.new("Terrain", mesh), material("Ground", (0.75, 0.75, 0.72)))
    wire = terrain.modifiers.new("Grid Lines", "WIREFRAME")
    wire.thickness, wire.use_replace, wire.material_offset = 0.015, False, 1
    terrain.data.materials.append(material("Lines", (0.25, 0.25, 0.28)))
    wall_x = 17
    wall = [y * columns + wall_x for y in range(rows) if y != 12]
    terrain.vertex_groups.new(name="Wall").add(wall, 1.0, "REPLACE")
    picked = [2 * columns + 1, 13 * columns + 9, 3 * columns + 22]

    bpy.context.view_layer.objects.active = terrain
    bpy.ops.object.mode_set(mode="EDIT")
    bm = bmesh.from_edit_mesh(terrain.data)
    bm.verts.ensure_lookup_table()
    for v in bm.verts:
        v.select = False
    for i in picked:
        bm.verts[i].select = True
        bm.select_history.add(bm.verts[i])
    print(bpy.ops.mesh.quillix_shortest_path(blocked_group="Wall"))
    bm = bmesh.from_edit_mesh(terrain.data)
    edges = [[tuple(v.co) for v in e.verts] for e in bm.edges if e.select]
    bpy.ops.object.mode_set(mode="OBJECT")

    tube("Path", [[(x, y, z + 0.03) for x, y, z in e] for e in edges], 0.06,
         material("Path", (1.0, 0.35, 0.05), 0.3))
    blocked_mat = material("Blocked", (0.7, 0.05, 0.05))
    for i in wall:
        marker(f"Blocked {i}", positions[i], 0.09, blocked_mat)
    picked_mat = material("Picked", (0.05, 0.25, 0.9), 0.3)
    for i in picked:
        marker(f"Picked {i}", positions[i], 0.16, picked_mat)
    stage((0.0, -10.5, 9.0), (0.0, 0.2, 0.0))
    render("blender_path.png")


def spheres_picture():
    """Spheres along a curve with sharp corners and smooth stretches: corner spheres larger,
    the stretches filled with three radii in turn."""
    clear_scene()
    curve = bpy.data.curves.new("Track", "CURVE")
    curve.dimensions = "3D"
    spline = curve.splines.new("POLY")
    t = np.linspace(0.0, 1.0, 60)
    wave = np.stack([-5 + 6 * t, 1.2 * np.sin(t * 2 * math.pi), np.zeros_like(t)], axis=1)
    corners = np.array([(1.5, -1.0, 0.0), (4.5, 2.0, 0.0), (4.5, 3.5, 0.5), (-3.0, 3.2, 0.0)])
    points = np.concatenate([wave, corners])
    spline.points.add(len(points) - 1)
    for point, co in zip(spline.points, points):
        point.co = (*co, 1.0)
    curve.bevel_depth = 0.03
    track = link(bpy.data.objects.new("Track", curve), material("Track", (0.2, 0.2, 0.22)))
    bpy.context.view_layer.objects.active = track
    print(bpy.ops.object.quillix_spheres_along_curve(radii="0.18, 0.28, 0.22", corner_threshold=0.4,
                                                     corner_scale=1.6, distribution="0"))
    corner_mat = material("Corner", (0.9, 0.25, 0.1), 0.3)
    stretch_mat = material("Stretch", (0.15, 0.45, 0.85), 0.3)
    sphere_mesh = next(o.data for o in bpy.data.objects if "quillix_corner" in o.keys())
    sphere_mesh.materials.append(stretch_mat)
    for obj in bpy.data.objects:
        if obj.get("quillix_corner"):
            # Object-linked material: the corners differ while sharing the one sphere mesh.
            obj.material_slots[0].link = "OBJECT"
            obj.material_slots[0].material = corner_mat
    ground = bpy.data.meshes.new("Ground")
    corners = [(-9, -6, -0.3), (9, -6, -0.3), (9, 9, -0.3), (-9, 9, -0.3)]
    ground.from_pydata(corners, [], [(0, 1, 2, 3)])
    link(bpy.data.objects.new("Ground", ground), material("Ground", (0.85, 0.85, 0.82)))
    stage((0.0, -8.5, 8.0), (0.0, 1.0, 0.0))
    render("blender_spheres.png")


quillix_addon.register()
os.makedirs(IMAGES, exist_ok=True)
path_picture()
spheres_picture()
