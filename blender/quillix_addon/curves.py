"""Curve objects: "Quillix Simplify" and "Quillix Resample and Smooth" on the active curve's
poly and Bézier splines, whose control points are taken as the polyline."""

import bpy

from . import blender_data, module_path


def active_curve_poll(cls, context):
    """Shared poll of the curve operators: an active curve object in object mode (edit mode
    keeps its own copy of the splines, which these operators would not see)."""
    obj = context.active_object
    if context.mode != "OBJECT" or obj is None or obj.type != "CURVE":
        cls.poll_message_set("Needs an active curve object in object mode")
        return False
    return True


def curve_polylines(operator, obj):
    """The control points of the object's poly and Bézier splines (None for other splines),
    or None after a warning report when there is none to work on."""
    polylines = [blender_data.spline_points(s) for s in obj.data.splines]
    if not any(p is not None and len(p) > 0 for p in polylines):
        operator.report({"WARNING"}, f"\"{obj.name}\" has no poly or Bézier spline")
        return None
    return polylines


def spline_results(operator, obj, compute):
    """`compute(quillix, points, spline)` for every poly and Bézier spline of `obj`, as
    (polylines, results) with None for the other splines; None after a warning report when
    there is nothing to work on, no module, or the module refuses a spline."""
    polylines = curve_polylines(operator, obj)
    if polylines is None:
        return None
    quillix = module_path.quillix_or_report(operator)
    if quillix is None:
        return None
    try:
        results = [
            None if points is None else compute(quillix, points, spline)
            for points, spline in zip(polylines, obj.data.splines)
        ]
    except ValueError as error:
        operator.report({"WARNING"}, str(error))
        return None
    return polylines, results


class CurveRewriteOperator:
    """Runs `polyline_result` on every poly and Bézier spline of the active curve and writes
    the results back, in place or into a copy of the object."""

    bl_options = {"REGISTER", "UNDO"}
    result_suffix = ""

    new_object: bpy.props.BoolProperty(
        name="New Object",
        description="Write the result into a copy of the curve object and keep the original",
        default=False,
    )

    @classmethod
    def poll(cls, context):
        return active_curve_poll(cls, context)

    def polyline_result(self, quillix, points, spline):
        raise NotImplementedError

    def execute(self, context):
        obj = context.active_object
        computed = spline_results(self, obj, self.polyline_result)
        if computed is None:
            return {"CANCELLED"}
        polylines, results = computed

        target = obj
        if self.new_object:
            target = obj.copy()
            target.data = obj.data.copy()
            target.name = obj.name + self.result_suffix
            for collection in obj.users_collection:
                collection.objects.link(target)
            obj.select_set(False)
            target.select_set(True)
            context.view_layer.objects.active = target
        blender_data.rewrite_splines(target.data, results)

        done = [(len(p), len(r)) for p, r in zip(polylines, results) if r is not None]
        before, after = sum(d[0] for d in done), sum(d[1] for d in done)
        skipped = sum(1 for r in results if r is None)
        dropped = sum(1 for r in results if r is not None and len(r) == 0)
        splines = "1 spline" if len(done) == 1 else f"{len(done)} splines"
        text = f"{self.bl_label}: {splines}, {before} → {after} points"
        text += f" on \"{target.name}\""
        if dropped:
            text += f", {dropped} emptied splines removed"
        if skipped:
            text += f", {skipped} NURBS splines left as they are"
        self.report({"INFO"}, text)
        return {"FINISHED"}


class OBJECT_OT_quillix_simplify(CurveRewriteOperator, bpy.types.Operator):
    """Simplify the active curve's poly and Bézier splines: drop the control points that lie
    within a tolerance of the line through the points kept"""

    bl_idname = "object.quillix_simplify"
    bl_label = "Quillix Simplify"
    result_suffix = " Simplified"

    epsilon: bpy.props.FloatProperty(
        name="Epsilon",
        description="Points closer than this to the simplified line are dropped",
        default=1.0,
        min=0.0,
        soft_max=10.0,
    )
    closed: bpy.props.EnumProperty(
        name="Closed",
        description="Treat a spline as closed: its end points are merged when they lie within "
        "twice epsilon of each other",
        items=(
            ("SPLINE", "As Spline", "Closed when the spline is cyclic"),
            ("OPEN", "Open", "Never merge the end points"),
            ("CLOSED", "Closed", "Merge close end points of every spline"),
        ),
        default="SPLINE",
    )
    min_three: bpy.props.BoolProperty(
        name="At Least Three Points",
        description="Keep at least three points per spline (a midpoint is added if needed)",
        default=False,
    )

    def polyline_result(self, quillix, points, spline):
        closed = spline.use_cyclic_u if self.closed == "SPLINE" else self.closed == "CLOSED"
        return quillix.simplify_polyline(points, self.epsilon, closed, self.min_three)


class OBJECT_OT_quillix_resample(CurveRewriteOperator, bpy.types.Operator):
    """Resample the active curve's poly and Bézier splines evenly by length, then smooth
    their interior points"""

    bl_idname = "object.quillix_resample"
    bl_label = "Quillix Resample and Smooth"
    result_suffix = " Resampled"

    mode: bpy.props.EnumProperty(
        name="Mode",
        items=(
            ("COUNT", "Count", "A number of points from the first to the last point"),
            ("DENSITY", "Density", "Points per unit length; the result stops at the last "
             "whole spacing before the end"),
        ),
        default="COUNT",
    )
    count: bpy.props.IntProperty(
        name="Count", description="Points per spline (fewer than 2 empty the spline)",
        default=20, min=0, soft_max=1000,
    )
    density: bpy.props.FloatProperty(
        name="Density", description="Points per unit length", default=1.0, min=1e-6,
        soft_max=100.0,
    )
    smooth_strength: bpy.props.FloatProperty(
        name="Smooth Strength", description="How far each pass moves a point towards its "
        "neighbours' middle", default=0.7, min=0.0, max=1.0,
    )
    smooth_iterations: bpy.props.IntProperty(
        name="Smooth Iterations", default=3, min=0, soft_max=100,
    )

    def draw(self, context):
        layout = self.layout
        layout.prop(self, "mode")
        layout.prop(self, "count" if self.mode == "COUNT" else "density")
        layout.prop(self, "smooth_strength")
        layout.prop(self, "smooth_iterations")
        layout.prop(self, "new_object")

    def polyline_result(self, quillix, points, spline):
        spacing = {"count": self.count} if self.mode == "COUNT" else {"density": self.density}
        return quillix.resample_polyline(
            points, **spacing, smooth_strength=self.smooth_strength,
            smooth_iterations=self.smooth_iterations,
        )


classes = (OBJECT_OT_quillix_simplify, OBJECT_OT_quillix_resample)
