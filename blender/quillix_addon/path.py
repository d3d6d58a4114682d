"""Mesh edit mode: "Quillix Shortest Path" through the picked vertices, in picking order."""

import bmesh
import bpy
import numpy as np

from . import blender_data, module_path


class PathMesh:
    """The path search's mesh built from a Blender mesh, with the index maps between the two.

    The search drops vertices that no polygon uses and renumbers the rest in their order, so
    Blender's vertex i is search vertex to_search[i] (-1 when dropped) and search vertex k is
    Blender's vertex kept[k].
    """

    def __init__(self, quillix, positions, description):
        self.positions = positions
        self.mesh = quillix.Mesh(positions, description)
        self.kept = np.unique(description[description >= 0])
        self.to_search = np.full(len(positions), -1, dtype=np.int32)
        self.to_search[self.kept] = np.arange(len(self.kept), dtype=np.int32)
        # Polygons the search finds invalid (repeated corners) would shift the numbering.
        self.consistent = self.mesh.vertex_count == len(self.kept) and np.array_equal(
            self.mesh.positions, positions[self.kept]
        )


def _search_data(context, obj, bm):
    """Positions and polygons of the evaluated mesh when modifiers keep the edit mesh's vertex
    numbering (shape keys, deforming modifiers); otherwise those of the edit mesh itself, with
    a note for the report."""
    evaluated = obj.evaluated_get(context.evaluated_depsgraph_get())
    mesh = evaluated.to_mesh()
    try:
        if len(mesh.vertices) == len(bm.verts):
            return blender_data.vertex_positions(mesh), blender_data.polygon_description(mesh), ""
    finally:
        evaluated.to_mesh_clear()
    positions = np.array([v.co for v in bm.verts], dtype=np.float32).reshape(-1, 3)
    description = [i for face in bm.faces for i in [v.index for v in face.verts] + [-1]]
    note = " (modifiers change the vertex numbering: searched the edit mesh)"
    return positions, np.array(description, dtype=np.int32), note


def _blocked_mask(obj, bm, group_name):
    """Blender vertices with a weight above 0 in the vertex group `group_name`."""
    blocked = np.zeros(len(bm.verts), dtype=bool)
    group = obj.vertex_groups.get(group_name) if group_name else None
    layer = bm.verts.layers.deform.active
    if group is None or layer is None:
        return blocked
    for v in bm.verts:
        blocked[v.index] = v[layer].get(group.index, 0.0) > 0.0
    return blocked


def _failure_message(quillix, search, picked, blocked):
    """Why the chain failed: the first pair of picked vertices without a path, with the
    kernel's message (start = end has no message of its own)."""
    for a, b in zip(picked, picked[1:]):
        try:
            quillix.vertex_path(search.mesh, search.to_search[a], search.to_search[b], blocked)
        except quillix.KernelError as error:
            reason = (
                "the same vertex twice in a row"
                if error.status == -2
                else quillix.status_message(error.status)
            )
            return f"No path from vertex {a} to vertex {b}: {reason}"
    return "No path through the picked vertices"


def _select_path(bm, path, picked):
    """Selects exactly the path's vertices and edges, keeping the picking order for a rerun."""
    for elements in (bm.faces, bm.edges, bm.verts):
        for element in elements:
            element.select = False
    bm.verts.ensure_lookup_table()
    verts = [bm.verts[i] for i in path]
    for v in verts:
        v.select = True
    for a, b in zip(verts, verts[1:]):
        edge = bm.edges.get((a, b))
        if edge is not None:
            edge.select = True
    bm.select_history.clear()
    for i in picked:
        bm.select_history.add(bm.verts[i])


class MESH_OT_quillix_shortest_path(bpy.types.Operator):
    """Select the shortest path through the picked vertices, in the order they were picked,
    around the vertices of a vertex group"""

    bl_idname = "mesh.quillix_shortest_path"
    bl_label = "Quillix Shortest Path"
    bl_options = {"REGISTER", "UNDO"}

    blocked_group: bpy.props.StringProperty(
        name="Blocked Group",
        description="Vertices with a weight in this vertex group are never on the path",
    )

    @classmethod
    def poll(cls, context):
        obj = context.edit_object
        if context.mode != "EDIT_MESH" or obj is None or obj.type != "MESH":
            cls.poll_message_set("Needs a mesh in edit mode")
            return False
        return True

    def draw(self, context):
        self.layout.prop_search(self, "blocked_group", context.edit_object, "vertex_groups")

    def execute(self, context):
        obj = context.edit_object
        bm = bmesh.from_edit_mesh(obj.data)
        bm.verts.index_update()
        picked = [e.index for e in bm.select_history if isinstance(e, bmesh.types.BMVert)]
        if len(picked) < 2:
            self.report(
                {"WARNING"},
                "Pick at least two vertices one after another (click, then Shift+click): "
                "the path follows the picking order",
            )
            return {"CANCELLED"}
        if self.blocked_group and self.blocked_group not in obj.vertex_groups:
            self.report({"WARNING"}, f"No vertex group \"{self.blocked_group}\"")
            return {"CANCELLED"}
        quillix = module_path.quillix_or_report(self)
        if quillix is None:
            return {"CANCELLED"}

        positions, description, note = _search_data(context, obj, bm)
        try:
            search = PathMesh(quillix, positions, description)
        except (quillix.KernelError, ValueError) as error:
            self.report({"WARNING"}, f"The mesh cannot be searched: {error}")
            return {"CANCELLED"}
        if not search.consistent:
            self.report(
                {"WARNING"}, "The mesh has polygons with repeated corners; merge them first"
            )
            return {"CANCELLED"}
        loose = [i for i in picked if search.to_search[i] < 0]
        if loose:
            self.report({"WARNING"}, f"Vertex {loose[0]} belongs to no face")
            return {"CANCELLED"}

        blocked = _blocked_mask(obj, bm, self.blocked_group)[search.kept]
        path = quillix.chain_path(search.mesh, search.to_search[picked], blocked)
        if len(path) == 0:
            self.report({"WARNING"}, _failure_message(quillix, search, picked, blocked))
            return {"CANCELLED"}
        path = search.kept[path]
        _select_path(bm, path, picked)
        bmesh.update_edit_mesh(obj.data, loop_triangles=False, destructive=False)

        steps = np.diff(positions[path].astype(np.float64), axis=0)
        length = float(np.sqrt((steps * steps).sum(axis=1)).sum())
        self.report(
            {"INFO"},
            f"Quillix path: {len(path)} vertices, length {length:.4g} through "
            f"{len(picked)} picked vertices{note}",
        )
        return {"FINISHED"}


classes = (MESH_OT_quillix_shortest_path,)


def menu_select_edit_mesh(self, context):
    self.layout.operator(MESH_OT_quillix_shortest_path.bl_idname)
