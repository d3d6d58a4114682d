"""Quillix's cores and offline host on NumPy arrays.

Every function behaves exactly as the node or core it exposes (named in its docstring); the
arrays it takes follow one contract:

* positions are ``(N, 3)`` float32, matrices ``(4, 4)`` or ``(N, 4, 4)`` float32 in the
  row-vector convention (row 3 is the translation), indices int32, masks bool;
* an argument that already has that dtype and is C-contiguous is used in place; any other
  real (or, for indices, integer) input is converted once;
* a wrong shape raises ValueError, a dtype that cannot stand for the wanted one TypeError,
  both naming the argument; kernel failures raise :class:`KernelError`.

Long calls release the GIL. See docs/python.md for a tour.
"""

from ._quillix import (
    KernelError,
    MATCH_WEIGHT_NAMES,
    Mesh,
    ObjectFeatures,
    TransformParts,
    boxes_contact_time,
    boxes_intersect,
    chain_path,
    ellipsoid_distance,
    find_matching_scores,
    join_strings,
    levenshtein_distance,
    number_text,
    pack_string,
    read_mesh,
    resample_polyline,
    simplify_polyline,
    spheres_along_spline,
    status_message,
    to_text,
    vertex_path,
    vertex_paths,
)

__all__ = [
    "KernelError",
    "MATCH_WEIGHT_NAMES",
    "Mesh",
    "ObjectFeatures",
    "TransformParts",
    "boxes_contact_time",
    "boxes_intersect",
    "chain_path",
    "ellipsoid_distance",
    "find_matching_scores",
    "join_strings",
    "levenshtein_distance",
    "number_text",
    "pack_string",
    "read_mesh",
    "resample_polyline",
    "simplify_polyline",
    "spheres_along_spline",
    "status_message",
    "to_text",
    "vertex_path",
    "vertex_paths",
]
