"""Object mode: "Quillix Box Contacts" tests the oriented bounding boxes of the selected
objects pairwise, at rest or over their motion between two frames, and selects those that
touch."""

import itertools

import bpy
import numpy as np
from mathutils import Matrix

from . import blender_data, module_path

# Object types with geometry and so with local bounds.
_BOUNDED_TYPES = {"MESH", "CURVE", "SURFACE", "FONT", "META", "VOLUME", "POINTCLOUD", "CURVES"}


def box_matrix(obj):
    """The object's oriented bounding box as the image of the cube [-1, 1]³: its world matrix
    times the map of that cube onto the local bounds, in the row-vector convention."""
    corners = np.array(obj.bound_box, dtype=np.float64)
    low, high = corners.min(axis=0), corners.max(axis=0)
    to_bounds = Matrix.Translation((0.5 * (low + high)).tolist()) @ Matrix.Diagonal(
        [*(0.5 * (high - low)).tolist(), 1.0]
    )
    return blender_data.row_matrix(obj.matrix_world @ to_bounds)


def _moving_box_matrix(start, end, subdivisions):
    """A box at its start with the displacement of its centre to `end` in column 3 and the
    subdivision count in the corner, the packing the moving-box test reads."""
    packed = start.copy()
    packed[:3, 3] = end[3, :3] - start[3, :3]
    packed[3, 3] = subdivisions
    return packed


class OBJECT_OT_quillix_box_contacts(bpy.types.Operator):
    """Test the oriented bounding boxes of the selected objects pairwise, at rest or moving
    between two frames, and select the objects that touch another"""

    bl_idname = "object.quillix_box_contacts"
    bl_label = "Quillix Box Contacts"
    bl_options = {"REGISTER", "UNDO"}

    motion: bpy.props.BoolProperty(
        name="Motion", description="Test the motion from the start frame to the end frame "
        "instead of the boxes at the current frame", default=False,
    )
    mode: bpy.props.EnumProperty(
        name="Test",
        items=(
            ("-1", "Bounds", "World-aligned bounds only (may report boxes that miss)"),
            ("0", "Faces", "Bounds, then the face planes of each box"),
            ("1", "Edges", "Faces, then the planes through each box's edges"),
        ),
        default="0",
    )
    frame_start: bpy.props.IntProperty(name="Start Frame", default=1)
    frame_end: bpy.props.IntProperty(name="End Frame", default=10)
    subdivisions: bpy.props.IntProperty(
        name="Subdivisions", description="Sub-steps of the motion tested one after another "
        "(0: one candidate time)", default=0, min=0, soft_max=64,
    )

    @classmethod
    def poll(cls, context):
        if context.mode != "OBJECT":
            cls.poll_message_set("Needs object mode")
            return False
        return True

    def draw(self, context):
        layout = self.layout
        layout.prop(self, "mode")
        layout.prop(self, "motion")
        column = layout.column()
        column.enabled = self.motion
        column.prop(self, "frame_start")
        column.prop(self, "frame_end")
        column.prop(self, "subdivisions")

    def boxes_at(self, context, objects, frame):
        scene = context.scene
        current, subframe = scene.frame_current, scene.frame_subframe
        scene.frame_set(frame)
        boxes = np.stack([box_matrix(obj) for obj in objects])
        scene.frame_set(current, subframe=subframe)
        return boxes

    def execute(self, context):
        objects = [obj for obj in context.selected_objects if obj.type in _BOUNDED_TYPES]
        if len(objects) < 2:
            self.report({"WARNING"}, "Select at least two objects with geometry")
            return {"CANCELLED"}
        quillix = module_path.quillix_or_report(self)
        if quillix is None:
            return {"CANCELLED"}
        pairs = np.array(list(itertools.combinations(range(len(objects)), 2)))
        mode = int(self.mode)
        if self.motion:
            start = self.boxes_at(context, objects, self.frame_start)
            end = self.boxes_at(context, objects, self.frame_end)
            packed = np.stack(
                [_moving_box_matrix(s, e, self.subdivisions) for s, e in zip(start, end)]
            )
            times = np.atleast_1d(
                quillix.boxes_contact_time(packed[pairs[:, 0]], packed[pairs[:, 1]], mode)
            )
            # The time is a fraction of the motion; later contacts lie beyond the end frame.
            touching = (times >= 0.0) & (times <= 1.0)
        else:
            boxes = np.stack([box_matrix(obj) for obj in objects])
            touching = np.atleast_1d(
                quillix.boxes_intersect(boxes[pairs[:, 0]], boxes[pairs[:, 1]], mode)
            )

        touched = set(pairs[touching].ravel().tolist())
        for index, obj in enumerate(objects):
            obj.select_set(index in touched)
        contacts = [f"{objects[a].name}–{objects[b].name}" for a, b in pairs[touching]]
        if self.motion:
            contacts = [
                f"{name} at frame {self.frame_start + t * (self.frame_end - self.frame_start):.1f}"
                for name, t in zip(contacts, times[touching])
            ]
        summary = ", ".join(contacts[:8]) + (" …" if len(contacts) > 8 else "")
        self.report(
            {"INFO"},
            f"Quillix box contacts: {len(contacts)} of {len(pairs)} pairs touch, "
            f"{len(touched)} objects selected" + (f": {summary}" if contacts else ""),
        )
        return {"FINISHED"}


classes = (OBJECT_OT_quillix_box_contacts,)
