#!/usr/bin/python3
"""validate.py SCHEMA COMMAND: checks JSON Lines on standard input against the command's definition."""
import json
import sys

from jsonschema import Draft202012Validator

with open(sys.argv[1], encoding="utf-8") as file:
    schema = json.load(file)
Draft202012Validator.check_schema(schema)
schema.pop("anyOf")


def close(definition):
    """Forbids unknown keys: the schema lets later versions add keys, but today's output must have none."""
    if isinstance(definition, dict):
        if "properties" in definition:
            definition.setdefault("additionalProperties", False)
        for part in definition.values():
            close(part)
    elif isinstance(definition, list):
        for part in definition:
            close(part)


close(schema["$defs"])
schema["$ref"] = "#/$defs/" + sys.argv[2]
validator = Draft202012Validator(schema)
lines = 0
failed = False
for line in sys.stdin:
    lines += 1
    for error in validator.iter_errors(json.loads(line)):
        failed = True
        print(sys.argv[2] + ":", error.json_path, error.message[:300])
if lines == 0:
    print(sys.argv[2] + ": no output")
sys.exit(failed or lines == 0)
