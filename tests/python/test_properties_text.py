"""Text, status and matching functions on arbitrary values: the to-string and string nodes'
results (Host.eval), the edit distance against a plain dynamic programme, and clear errors."""

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st

import quillix
from strategies import ALL_DTYPES, SPECIAL_FLOATS, arrays, as_floats, as_indices, rows

TEXT = st.text(st.characters(blacklist_categories=("Cs",), blacklist_characters="\0"),
               max_size=12)
VALUES = st.one_of(arrays(rows((), 6)), arrays(st.just(())),
                   arrays(st.sampled_from([(2, 2), (1, 0)])), st.booleans(),
                   st.integers(-2**40, 2**40), st.sampled_from(SPECIAL_FLOATS), TEXT)


def node_text(host, node, inputs):
    request = {"node": node, "port": 2010, "inputs": inputs}
    return host.eval(request)["results"][0]["outputs"][0]["values"][0]


def port_value(array, port_type):
    """A node input holding `array`: one value for 0-d, the array structure for 1-D."""
    if array.ndim == 0:
        return {"type": port_type, "values": [array[()]]}
    return {"structure": "array", "type": port_type, "values": [array]}


def text_contract(value):
    """The typed array to_text renders, with the node that renders it, or the error."""
    if isinstance(value, bool):
        return np.array(value), "Quillix_btoa"
    array = np.asarray(value)
    if array.ndim > 1 or array.dtype.kind not in "biuf":
        return TypeError, None
    if array.dtype.kind == "b":
        return array, "Quillix_btoa"
    if array.dtype.kind in "iu":
        return as_indices(array), "Quillix_itoa"
    return as_floats(array), "Quillix_ftoa"


@given(VALUES)
def test_to_text_is_the_nodes(host, value):
    typed, node = text_contract(value)
    if isinstance(typed, type):
        with pytest.raises(typed):
            quillix.to_text(value)
        return
    port_type = {"Quillix_btoa": "bool", "Quillix_itoa": "int", "Quillix_ftoa": "float"}[node]
    got = quillix.to_text(value)
    assert got == node_text(host, node, {"1010": port_value(typed, port_type)})


@given(VALUES, st.integers(-2, 30), st.booleans(), st.integers(-2, 20))
def test_number_text_is_the_node(host, value, precision, as_integer, zeros):
    typed = as_floats(value)
    if not isinstance(typed, type) and typed.ndim > 1:
        typed = ValueError
    call = lambda: quillix.number_text(value, precision, as_integer, zeros)  # noqa: E731
    if isinstance(typed, type):
        with pytest.raises((TypeError, ValueError)):
            call()
        return
    assert call() == node_text(host, "Quillix_ntoa", {
        "1010": port_value(typed, "float"), "1020": {"type": "int", "values": [precision]},
        "1030": {"type": "bool", "values": [as_integer]},
        "1040": {"type": "int", "values": [zeros]}})


@given(st.lists(TEXT, max_size=5), TEXT, st.booleans())
def test_string_functions_are_the_nodes(host, entries, delimiter, active):
    joined = node_text(host, "Quillix_jstr", {
        "1010": {"structure": "array", "type": "string", "values": [entries]},
        "1020": {"type": "string", "values": [delimiter]}})
    assert quillix.join_strings(entries, delimiter) == joined
    text = "".join(entries)
    packed = node_text(host, "Quillix_stoi", {"1010": {"type": "bool", "values": [active]},
                                              "1620": {"type": "string", "values": [text]}})
    got = quillix.pack_string(text, active)
    assert got.dtype == np.int32 and got.tolist() == np.asarray(packed).tolist()


def byte_distance(a, b):
    a, b = a.encode(), b.encode()
    row = list(range(len(b) + 1))
    for i, x in enumerate(a, 1):
        previous, row[0] = row[0], i
        for j, y in enumerate(b, 1):
            previous, row[j] = row[j], min(row[j] + 1, row[j - 1] + 1, previous + (x != y))
    return row[-1]


@given(TEXT, TEXT, st.integers(-2**32, 2**33), st.booleans(), st.one_of(st.none(), TEXT))
def test_distance_and_status_texts(a, b, code, with_code, prefix):
    assert quillix.levenshtein_distance(a, b) == byte_distance(a, b)
    if not -2**31 <= code < 2**32:
        with pytest.raises(ValueError, match="code"):
            quillix.status_message(code)
        return
    text = quillix.status_message(code, with_code, prefix)
    bare = quillix.status_message(code)
    signed = code - 2**32 if code >= 2**31 else code
    assert text == (prefix or "") + (f"error {signed}: " if with_code else "") + bare
    assert bare == quillix.status_message(signed)


def features(name, values):
    f = quillix.ObjectFeatures()
    f.name = name
    f.point_count, f.triangle_count = (int(np.nan_to_num(v)) % 1000 for v in values[:2])
    f.sphere_radius, f.local_surface_area, f.global_surface_area = values[2:5]
    f.box_extent = values[5:8]
    f.global_vertex_center = values[8:11]
    return f


FEATURE_VALUES = st.lists(st.one_of(st.floats(-10, 10), st.sampled_from(SPECIAL_FLOATS)),
                          min_size=11, max_size=11)
WEIGHTS = st.one_of(
    st.none(), st.dictionaries(st.sampled_from(quillix.MATCH_WEIGHT_NAMES + ["bogus"]),
                               st.one_of(st.floats(), st.text(max_size=2), st.none())),
    arrays(st.sampled_from([(16,), (15,), (4, 4)]), dtypes=ALL_DTYPES))


@given(TEXT, FEATURE_VALUES, st.lists(st.tuples(TEXT, FEATURE_VALUES), max_size=5), WEIGHTS,
       st.integers(-3, 8))
def test_matching_ranks_or_refuses(name, values, candidates, weights, num_out):
    query = features(name, values)
    others = [features(*candidate) for candidate in candidates]
    try:
        result = quillix.find_matching_scores(query, others, weights=weights, num_out=num_out)
    except (TypeError, ValueError):
        return
    order = result["order"].tolist()
    assert result["scores"].shape == (len(others),)
    assert order == [] or sorted(order) == list(range(len(others)))
    assert len(result["percentages"]) == len(order)
