"""What the commands print with --json, against the schema that documents it.

usage: json_test.py REPOSITORY DOLQCTL
"""

import json
import os
import subprocess
import sys
import unittest

try:
    import jsonschema
except ImportError:
    print("skipped, not installed: python3-jsonschema")
    sys.exit(77)

REPOSITORY, PROGRAM = sys.argv.pop(1), sys.argv.pop(1)
MISTAKES = {"VELK_MANIFEST_DIR": "examples/loadmodules", "ZBN_NO": "CXC1370002", "ZBN_REV": "R2B"}
GOOD = MISTAKES | {"ZBN_NO": "CXC1370001", "ZBN_REV": "R1A",
                   "SYSTEM_UUID": "0b5f7c52-6e0c-4b8e-9a43-2f1d8c7e6a90", "COMPUTE_NAME": "compute-1"}
LOG = {"RUXA_NTF_LOG": "tests/tools/files/notifications.jsonl"}
FULL = {"LD_LIBRARY_PATH": os.environ["NTF_DOUBLE"], "DOUBLE": "real", "READINGS": "full"}
RUNS = [  # arguments, environment
    ("alarms --history", LOG),
    ("alarms --severity critical --since 1m", LOG),
    ("alarms", FULL),
    ("check --discovered", MISTAKES),
    ("check tests/tools/files/mistakes.xml tests/tools/files/unclosed.xml", {}),
    ("doctor", {}),
    ("doctor", GOOD),
]

with open(os.path.join(REPOSITORY, "schema/dolqctl.schema.json"), encoding="utf-8") as file:
    SCHEMA = json.load(file)


def document(arguments, environment):
    """What the command prints: `arguments` are separated by single blanks."""
    run = subprocess.run([PROGRAM, *arguments.split(" "), "--json"], cwd=REPOSITORY, check=False,
                         capture_output=True, env={"PATH": "/nonexistent", "RUXA_NTF_LOG": "/dev/null"} |
                         {name: value for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")} |
                         environment)
    return json.loads(run.stdout)


def keys(value, of_schema=False):
    """All keys of a document, or all that a schema names."""
    if isinstance(value, list):
        return set().union(*(keys(each, of_schema) for each in value))
    if not isinstance(value, dict):
        return set()
    named = value.get("properties", {}) if of_schema else value
    return set(named).union(*(keys(each, of_schema) for each in value.values()))


class JsonTest(unittest.TestCase):
    def test_schema(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)

    def test_documents(self):
        seen = set()
        for arguments, environment in RUNS:
            with self.subTest(arguments=arguments, environment=environment):
                printed = document(arguments, environment)
                reference = {"$ref": "#/$defs/" + arguments.split(" ")[0]} | {"$defs": SCHEMA["$defs"]}
                validator = jsonschema.Draft202012Validator(reference)
                self.assertEqual([error.message for error in validator.iter_errors(printed)], [])
                seen |= keys(printed)
        self.assertEqual(keys(SCHEMA, of_schema=True) - seen, set(), "documented, but never printed")


unittest.main()
