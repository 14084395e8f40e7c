#!/usr/bin/env python3
"""check_events.py SCHEMA FOLDER: holds every line of every .jsonl file in the folder against the schema of events."""
import json
import pathlib
import sys

import jsonschema

schema = json.loads(pathlib.Path(sys.argv[1]).read_text())
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)

# What must be refused, so that a schema that allows everything does not pass.
good = {"schema": 1, "event": "update", "id": 1, "camera": "c", "zone": "z", "grade": 70, "frame": 1, "seconds": 0.04,
        "boxes": [{"x": 1, "y": 1, "width": 2, "height": 2,
                   "per_mille": {"x": 1, "y": 1, "width": 2, "height": 2}}]}
bad = [dict(good, event="begin"), dict(good, more=1), dict(good, boxes=[]), dict(good, time="now"),
       dict(good, reason="gone"), {key: value for key, value in good.items() if key != "camera"}]
assert validator.is_valid(good)
assert not [line for line in bad if validator.is_valid(line)]

kinds, faults = {}, 0
for path in sorted(pathlib.Path(sys.argv[2]).glob("*.jsonl")):
    for text in path.read_text().splitlines():
        line = json.loads(text)
        kinds[line["event"]] = kinds.get(line["event"], 0) + 1
        for error in validator.iter_errors(line):
            faults += 1
            print(f"{path.name}: {text}\n  {error.message}")
print(kinds)
missing = {"start", "update", "end"} - set(kinds)
if missing:
    print(f"no test wrote an event of this kind: {missing}")
sys.exit(1 if faults or missing else 0)
