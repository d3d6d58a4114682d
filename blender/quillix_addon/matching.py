"""Object mode: "Quillix Select Similar Objects" ranks the scene's mesh objects by their
similarity to the active one and selects the best."""

import bpy
import numpy as np

from . import blender_data, module_path

# The ranking's weights (quillix.MATCH_WEIGHT_NAMES, in that order) and their defaults.
WEIGHTS = (
    ("name", "Name", 0.0),
    ("point_count", "Point Count", 1.0),
    ("triangle_count", "Triangle Count", 1.0),
    ("bounding_box", "Bounding Box", 1.0),
    ("bounding_sphere", "Bounding Sphere", 1.0),
    ("local_surf_area", "Local Surface Area", 1.0),
    ("local_surf_normal_average", "Local Normal Average", 1.0),
    ("local_pos", "Local Position", 0.0),
    ("local_rot", "Local Rotation", 0.0),
    ("local_scl", "Local Scale", 0.0),
    # A hint from where the vertices are, not a shape measure: hence the small default.
    ("global_vertex_center", "Global Vertex Center", 0.125),
    ("global_surf_area", "Global Surface Area", 0.0),
    ("global_surf_normal_average", "Global Normal Average", 0.0),
    ("global_pos", "Global Position", 0.0),
    ("global_rot", "Global Rotation", 0.0),
    ("global_scl", "Global Scale", 0.0),
)

TEXT_NAME = "Quillix Matches"


def _ordered_sum(values):
    """Sum along axis 0 added one entry after the other, as the scene command adds them
    (NumPy's sum pairs them up, which rounds differently)."""
    return np.add.accumulate(values, axis=0)[-1] if len(values) else np.zeros(values.shape[1:])


def _transform(points, rows):
    """Points or directions (N, 3) times a row-vector matrix, summed left to right; pass
    rows[:3] without the translation row for directions."""
    out = points[:, 0:1] * rows[0, :3] + points[:, 1:2] * rows[1, :3] + points[:, 2:3] * rows[2, :3]
    return out + rows[3, :3] if len(rows) > 3 else out


def _lengths(v):
    """Row lengths of (N, 3) vectors, squares added x, y, z in turn."""
    return np.sqrt(v[:, 0] * v[:, 0] + v[:, 1] * v[:, 1] + v[:, 2] * v[:, 2])


def _area(corners):
    a, b, c = corners[0::3], corners[1::3], corners[2::3]
    u, v = b - a, c - a
    cross = np.stack(
        (
            u[:, 1] * v[:, 2] - u[:, 2] * v[:, 1],
            u[:, 2] * v[:, 0] - u[:, 0] * v[:, 2],
            u[:, 0] * v[:, 1] - u[:, 1] * v[:, 0],
        ),
        axis=1,
    )
    length = _lengths(cross)
    return float(_ordered_sum(0.5 * length)) if len(length) else 0.0


def _average(vectors):
    return _ordered_sum(vectors) / len(vectors) if len(vectors) else np.zeros(3)


def transform_parts(quillix, matrix):
    """A Blender matrix as TransformParts: its scale, its rotation with the rotated axes as
    rows, and its translation."""
    translation, rotation, scale = matrix.decompose()
    parts = quillix.TransformParts()
    parts.translation = tuple(translation)
    parts.scaling = tuple(scale)
    parts.rotation = np.array(rotation.to_matrix(), dtype=np.float64).T
    return parts


def object_features(quillix, obj, depsgraph):
    """The features the ranking compares, from the object's evaluated mesh (modifiers
    applied) and its transforms. Corner normals stand for the polygon-node normals."""
    features = quillix.ObjectFeatures()
    features.name = obj.name
    features.local_transform = transform_parts(quillix, obj.matrix_local)
    features.global_transform = transform_parts(quillix, obj.matrix_world)
    world = blender_data.row_matrix(obj.matrix_world)
    evaluated = obj.evaluated_get(depsgraph)
    mesh = evaluated.to_mesh()
    try:
        mesh.calc_loop_triangles()
        mesh.calc_normals_split()
        positions = blender_data.vertex_positions(mesh).astype(np.float64)
        triangles = np.empty(len(mesh.loop_triangles) * 3, dtype=np.int32)
        mesh.loop_triangles.foreach_get("vertices", triangles)
        normals = np.empty(len(mesh.loop_triangles) * 9, dtype=np.float32)
        mesh.loop_triangles.foreach_get("split_normals", normals)
    finally:
        evaluated.to_mesh_clear()
    features.point_count = len(positions)
    features.triangle_count = len(triangles) // 3
    if len(positions):
        low, high = positions.min(axis=0), positions.max(axis=0)
        features.box_extent = high - low
        # The bounding sphere is centred on the bounding box.
        features.sphere_radius = float(_lengths(positions - 0.5 * (low + high)).max())
    corners = positions[triangles]
    normals = normals.reshape(-1, 3).astype(np.float64)
    features.local_surface_area = _area(corners)
    features.global_surface_area = _area(_transform(corners, world))
    features.global_vertex_center = _average(_transform(corners, world))
    features.local_normal_average = _average(normals)
    features.global_normal_average = _average(_transform(normals, world[:3]))
    return features


def _weight_annotations():
    return {
        "weight_" + key: bpy.props.FloatProperty(
            name=label, default=default, min=0.0, soft_max=10.0
        )
        for key, label, default in WEIGHTS
    }


class OBJECT_OT_quillix_select_similar(bpy.types.Operator):
    """Rank the scene's mesh objects by their similarity to the active object, select the
    best matches and list the percentages in the "Quillix Matches" text"""

    bl_idname = "object.quillix_select_similar"
    bl_label = "Quillix Select Similar Objects"
    bl_options = {"REGISTER", "UNDO"}

    __annotations__ = {
        "count": bpy.props.IntProperty(
            name="Count", description="How many of the best matches to select", default=1, min=1
        ),
        "skip_hidden": bpy.props.BoolProperty(
            name="Skip Hidden", description="Leave out objects hidden in the viewport", default=True
        ),
        "skip_siblings": bpy.props.BoolProperty(
            name="Skip Siblings",
            description="Leave out objects with the same parent object as the active one",
            default=False,
        ),
        **_weight_annotations(),
    }

    @classmethod
    def poll(cls, context):
        obj = context.active_object
        if context.mode != "OBJECT" or obj is None or obj.type != "MESH":
            cls.poll_message_set("Needs an active mesh object in object mode")
            return False
        return True

    def draw(self, context):
        layout = self.layout
        for key in ("count", "skip_hidden", "skip_siblings"):
            layout.prop(self, key)
        box = layout.box()
        box.label(text="Weights")
        for key, _, _ in WEIGHTS:
            box.prop(self, "weight_" + key)

    def candidates(self, context, active):
        def keep(obj):
            if obj is active or obj.type != "MESH":
                return False
            if self.skip_hidden and not obj.visible_get():
                return False
            return not (self.skip_siblings and active.parent and obj.parent == active.parent)

        return [obj for obj in context.scene.objects if keep(obj)]

    def execute(self, context):
        active = context.active_object
        candidates = self.candidates(context, active)
        if not candidates:
            self.report({"WARNING"}, "No other mesh object to compare with")
            return {"CANCELLED"}
        quillix = module_path.quillix_or_report(self)
        if quillix is None:
            return {"CANCELLED"}
        depsgraph = context.evaluated_depsgraph_get()
        weights = {key: getattr(self, "weight_" + key) for key, _, _ in WEIGHTS}
        ranking = quillix.find_matching_scores(
            object_features(quillix, active, depsgraph),
            [object_features(quillix, obj, depsgraph) for obj in candidates],
            weights=weights,
            num_out=self.count,
        )
        if len(ranking["order"]) == 0:
            self.report({"WARNING"}, "All weights are zero: nothing to compare")
            return {"CANCELLED"}

        ranked = [candidates[i] for i in ranking["order"]]
        for obj in context.view_layer.objects:
            obj.select_set(False)
        for obj in ranked[: self.count]:
            obj.select_set(True)

        text = bpy.data.texts.get(TEXT_NAME) or bpy.data.texts.new(TEXT_NAME)
        text.clear()
        text.write(f"Objects like \"{active.name}\", best first:\n")
        for obj, percent in zip(ranked, ranking["percentages"]):
            text.write(f"{percent:6.2f}%  {obj.name}\n")
        best = ", ".join(
            f"{obj.name} {percent:.2f}%"
            for obj, percent in zip(ranked[: self.count], ranking["percentages"])
        )
        self.report(
            {"INFO"}, f"Quillix matches for \"{active.name}\": {best} (all in \"{TEXT_NAME}\")"
        )
        return {"FINISHED"}


classes = (OBJECT_OT_quillix_select_similar,)
