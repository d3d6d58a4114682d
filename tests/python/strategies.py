"""Hypothesis strategies for what a caller may hand the package: arrays of every dtype, right and
wrong shapes, every memory layout NumPy can produce, and the awkward float values; plus the
package's array contract written out in NumPy, the oracle the property tests hold it to."""

import math

import numpy as np
from hypothesis import strategies as st
from hypothesis.extra import numpy as hnp

INT_DTYPES = [np.dtype(n) for n in
              ("int8", "int16", "int32", "int64", "uint8", "uint16", "uint32", "uint64")]
FLOAT_DTYPES = [np.dtype(n) for n in ("float16", "float32", "float64")]
REAL_DTYPES = INT_DTYPES + FLOAT_DTYPES
ALL_DTYPES = REAL_DTYPES + [np.dtype(n) for n in ("bool", "object", "complex64", "complex128")]

# NaN, infinities, the largest and smallest normal float32, a float32 denormal, values beyond
# float32's range, -0.0.
SPECIAL_FLOATS = [math.nan, math.inf, -math.inf, -0.0, 0.0, 3.4028235e38, -3.4028235e38,
                  1.1754944e-38, 1e-45, -1e-40, 1e39, -1e300, 5e-324]


def elements(dtype, small=5):
    """Values of `dtype`: mostly small ones (so geometry has something to do), plus every
    extreme the dtype can hold."""
    if dtype.kind == "O":
        return st.one_of(st.integers(-small, small), st.floats(-small, small))
    if dtype.kind == "b":
        return st.booleans()
    extreme = hnp.from_dtype(dtype)
    if dtype.kind == "f":
        specials = st.sampled_from(SPECIAL_FLOATS).map(lambda v: dtype.type(v))
        extreme = st.one_of(extreme, specials)
    if dtype.kind == "u":
        return st.one_of(st.integers(0, small), extreme)
    return st.one_of(st.integers(-small, small), extreme)


@st.composite
def relayout(draw, array):
    """`array`'s values in another memory layout: Fortran order, strided, negative strides,
    read-only, a view of a view, or as it is."""
    if array.ndim == 0 or array.dtype.kind == "O":
        return array
    kind = draw(st.sampled_from(["plain", "fortran", "strided", "negative", "readonly", "nested"]))
    if kind == "fortran":
        return np.asfortranarray(array)
    if kind == "strided":
        return np.repeat(array, 2, axis=-1)[..., ::2]
    if kind == "negative":
        flipped = np.flip(array).copy()
        return np.flip(flipped)
    if kind == "readonly":
        frozen = array.copy()
        frozen.flags.writeable = False
        return frozen
    if kind == "nested":
        outer = np.zeros(tuple(n + 2 for n in array.shape), array.dtype)
        outer[tuple(slice(1, n + 1) for n in array.shape)] = array
        return outer[1:-1][(slice(None),) + tuple(slice(1, n + 1) for n in array.shape[1:])]
    return array


@st.composite
def arrays(draw, shape, dtypes=ALL_DTYPES, small=5):
    """An array of `shape` (a tuple or a strategy of tuples) with a drawn dtype, values and
    layout."""
    dtype = draw(st.sampled_from(dtypes))
    if not isinstance(shape, tuple):
        shape = draw(shape)
    array = draw(hnp.arrays(dtype, shape, elements=elements(dtype, small)))
    return draw(relayout(array))


def rows(width, max_rows=12):
    """Shapes (N, width...), N from 0 to max_rows."""
    return st.integers(0, max_rows).map(lambda n: (n,) + width)


def any_shape():
    """Shapes of rank 0 to 4, including zero extents."""
    return hnp.array_shapes(min_dims=0, max_dims=4, min_side=0, max_side=5)


def broadcast_rows(width, huge):
    """A (rows, width...) array of one repeated row made by broadcasting: nothing is stored
    per row, so `rows` may claim far more than memory holds."""
    rows_strategy = st.integers(2**31, 2**45) if huge else st.integers(0, 300)
    return st.tuples(rows_strategy, st.sampled_from(REAL_DTYPES)).map(
        lambda args: np.broadcast_to(np.ones(width, args[1]), (args[0],) + width))


# The contract: what the package must make of an argument, or the error it must raise.

def as_floats(value):
    """The float32 array the package computes with, or TypeError for a dtype that cannot stand
    for coordinates."""
    array = np.asarray(value)
    if array.dtype.kind not in "fiu":
        return TypeError
    return np.array(array, dtype=np.float32, order="C")


def as_points(value):
    """(N, 3) float32, an empty 1-D array as (0, 3); TypeError or ValueError otherwise."""
    array = as_floats(value)
    if array is TypeError:
        return TypeError
    if array.ndim == 1 and array.size == 0:
        return array.reshape(0, 3)
    return array if array.ndim == 2 and array.shape[1] == 3 else ValueError


def as_matrices(value):
    """(4, 4) or (N, 4, 4) float32; TypeError or ValueError otherwise."""
    array = as_floats(value)
    if array is TypeError:
        return TypeError
    return array if array.shape[-2:] == (4, 4) and array.ndim in (2, 3) else ValueError


def as_indices(value):
    """int32 from integer dtypes whose values fit 32 bits (and from an empty float array);
    ValueError for values that do not fit, TypeError for other dtypes."""
    array = np.asarray(value)
    if array.dtype.kind == "f" and array.size == 0:
        return array.astype(np.int32)
    if array.dtype.kind not in "iu":
        return TypeError
    if array.size and (array.max() > 2**31 - 1 or array.min() < -2**31):
        return ValueError
    return np.array(array, dtype=np.int32, order="C")


def f32(value):
    """A Python float rounded to float32, as a binding's float parameter takes it."""
    return float(np.float32(value))


def same_bits(actual, expected):
    actual = np.asarray(actual)
    expected = np.asarray(expected, dtype=actual.dtype).reshape(actual.shape)
    assert actual.tobytes() == expected.tobytes(), (actual, expected)
