"""Summarises quillix's JSON on standard input in a few lines, for the demo.

    quillix eval REQUEST | python3 scripts/summarise_results.py eval
    quillix list --json  | python3 scripts/summarise_results.py list

`eval`: one line per request, its node and, per evaluated port, the first element values in
short form (points and matrices counted, not printed), plus any warning or error it logged.
`list`: the plug-in's identity, its commands and its node names.
"""

import json
import sys
import textwrap

WIDTH = 110
SHOWN_ELEMENTS = 6
SEVERITIES = (2, 4)  # errors and warnings


def is_number(value):
    return isinstance(value, (int, float)) and not isinstance(value, bool)


def scalar(value):
    if value is None:
        return "-"
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, float):
        return f"{value:.4g}"
    if isinstance(value, str):
        # Float bit strings are kept as they are; text is quoted and cut.
        if value.startswith("0x") and len(value) == 10:
            return value
        return json.dumps(value if len(value) <= 24 else value[:21] + "...")
    return str(value)


def is_vector(value):
    return isinstance(value, list) and value and all(not isinstance(v, list) for v in value)


def counted(count, one, many):
    return f"[{count} {one if count == 1 else many}]"


def element(value):
    """One element's value in a few characters: scalars and short lists as they are, lists of
    vectors and of matrices counted."""
    if not isinstance(value, list):
        return scalar(value)
    if value and all(isinstance(v, list) and v and all(is_vector(row) for row in v) for v in value):
        return counted(len(value), "matrix", "matrices")
    if value and all(is_vector(v) for v in value):
        return counted(len(value), "point", "points") if len(value[0]) == 3 else counted(len(value), "vector", "vectors")
    shown = " ".join(element(v) for v in value[:SHOWN_ELEMENTS])
    more = f" +{len(value) - SHOWN_ELEMENTS}" if len(value) > SHOWN_ELEMENTS else ""
    return f"[{shown}{more}]"


def output(entry):
    values = entry.get("values", [])
    shown = " ".join(element(v) for v in values[:SHOWN_ELEMENTS])
    more = f" ... (+{len(values) - SHOWN_ELEMENTS})" if len(values) > SHOWN_ELEMENTS else ""
    if not values:
        shown = "(nothing)"
    status = "" if entry.get("status", 0) == 0 else f" status {entry['status']}"
    return f"{entry.get('port')}{status}: {shown}{more}"


def summarise_eval(document):
    for index, result in enumerate(document.get("results", [])):
        line = f"  r{index} {result.get('node', '?')} " + " | ".join(output(o) for o in result.get("outputs", []))
        notable = [" ".join(text.split()) for severity, text in result.get("log", []) if severity in SEVERITIES]
        if notable:
            line += f"  [{len(notable)} logged: {notable[0]}]"
        print(line if len(line) <= WIDTH else line[: WIDTH - 3] + "...")


def summarise_list(document):
    plugin = document["plugin"]
    version = ".".join(str(v) for v in plugin["version"])
    print(f"  {plugin['name']} {version} by {plugin['author']} <{plugin['email']}>")
    print(f"  commands: {', '.join(document['commands'])}")
    names = ", ".join(node["name"] for node in document["nodes"])
    print(textwrap.fill(f"{len(document['nodes'])} nodes: {names}", WIDTH, initial_indent="  ", subsequent_indent="    "))


def main():
    if len(sys.argv) != 2 or sys.argv[1] not in ("eval", "list"):
        sys.exit(__doc__)
    document = json.load(sys.stdin)
    (summarise_eval if sys.argv[1] == "eval" else summarise_list)(document)


if __name__ == "__main__":
    main()
