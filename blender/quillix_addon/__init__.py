"""Quillix operators for Blender, computed by the ``quillix`` Python module.

Where they are:
* Mesh edit mode, Select menu: Quillix Shortest Path.
* Object mode, Object menu > Quillix (active curve): Quillix Simplify, Quillix Resample and
  Smooth, Quillix Spheres Along Curve.
* Object mode, Select menu: Quillix Select Similar Objects, Quillix Box Contacts.

The module is looked up when an operator first runs (module_path.py says where), so the
add-on registers even when the module is missing and its operators say so instead.
"""

bl_info = {
    "name": "Quillix",
    "author": "Quillix developers",
    "version": (1, 0, 0),
    "blender": (3, 4, 0),
    "location": "Edit Mesh > Select; Object > Quillix; Object > Select",
    "description": "Shortest vertex paths, curve simplify and resample, spheres along "
    "curves, similar objects and box contacts from the quillix module",
    "category": "Object",
}

import bpy

from . import boxes, curves, matching, module_path, path, spheres


class QuillixPreferences(bpy.types.AddonPreferences):
    bl_idname = __package__

    module_folder: bpy.props.StringProperty(
        name="Module Folder",
        description="Folder holding the quillix package (quillix/__init__.py), when Blender "
        "does not find it by itself",
        subtype="DIR_PATH",
    )

    def draw(self, context):
        self.layout.prop(self, "module_folder")
        module, message = module_path.load()
        if module is None:
            self.layout.label(text=message, icon="ERROR")
        else:
            self.layout.label(text=f"quillix found: {module.__file__}", icon="CHECKMARK")


class VIEW3D_MT_quillix_object(bpy.types.Menu):
    bl_label = "Quillix"
    bl_idname = "VIEW3D_MT_quillix_object"

    def draw(self, context):
        layout = self.layout
        layout.operator(curves.OBJECT_OT_quillix_simplify.bl_idname)
        layout.operator(curves.OBJECT_OT_quillix_resample.bl_idname)
        layout.operator(spheres.OBJECT_OT_quillix_spheres_along_curve.bl_idname)
        layout.separator()
        layout.operator(matching.OBJECT_OT_quillix_select_similar.bl_idname)
        layout.operator(boxes.OBJECT_OT_quillix_box_contacts.bl_idname)


def _object_menu(self, context):
    self.layout.menu(VIEW3D_MT_quillix_object.bl_idname)


def _select_object_menu(self, context):
    self.layout.separator()
    self.layout.operator(matching.OBJECT_OT_quillix_select_similar.bl_idname)
    self.layout.operator(boxes.OBJECT_OT_quillix_box_contacts.bl_idname)


def _select_edit_mesh_menu(self, context):
    self.layout.operator(path.MESH_OT_quillix_shortest_path.bl_idname)


_CLASSES = (
    QuillixPreferences,
    *path.classes,
    *curves.classes,
    *spheres.classes,
    *matching.classes,
    *boxes.classes,
    VIEW3D_MT_quillix_object,
)
_MENUS = (
    (bpy.types.VIEW3D_MT_object, _object_menu),
    (bpy.types.VIEW3D_MT_select_object, _select_object_menu),
    (bpy.types.VIEW3D_MT_select_edit_mesh, _select_edit_mesh_menu),
)


def register():
    for cls in _CLASSES:
        bpy.utils.register_class(cls)
    for menu, entry in _MENUS:
        menu.append(entry)


def unregister():
    for menu, entry in reversed(_MENUS):
        menu.remove(entry)
    for cls in reversed(_CLASSES):
        bpy.utils.unregister_class(cls)
