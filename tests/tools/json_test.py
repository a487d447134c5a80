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
    ("explain --fault 4102 --object Port=1", GOOD),
    ("mappings", GOOD),
    ("mappings", {}),
]

with open(os.path.join(REPOSITORY, "schema/dolqctl.schema.json"), encoding="utf-8") as file:
    SCHEMA = json.load(file)


def output(command, environment):
    """What the command prints: it is separated by single blanks."""
    run = subprocess.run(command.split(" "), cwd=REPOSITORY, check=False, capture_output=True,
                         env={"PATH": "/nonexistent", "RUXA_NTF_LOG": "/dev/null"} |
                         {name: value for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")} |
                         environment)
    return run.stdout


def document(arguments, environment):
    return json.loads(output(f"{PROGRAM} {arguments} --json", environment))


def as_reader_prints(alarm):
    """The alarm's latest raise in the form of the independent reader, event time left out."""
    def values(field, key):
        return [f"{field} {each['id']}: {each['value']} ({len(each['value'].encode()) + 1} bytes)" for each in alarm[key]]
    severities = ["cleared", "indeterminate", "warning", "minor", "major", "critical"]
    events = ["alarm", "communications", "qualityOfService", "processingError", "equipment", "environmental"]
    return "\n".join([
        f"notification: {alarm['notificationId']}", f"event type: {0x4000 + events.index(alarm['eventType']):#x}",
        f"object: {alarm['object']}", f"notifying object: {alarm['notifyingObject']}",
        "class: {vendorId}:{majorId}/{minorId}".format(**alarm["classId"]),
        f"severity: {severities.index(alarm['severity'])}", f"probable cause: {alarm['probableCause']}",
        f"trend: {['moreSevere', 'noChange', 'lessSevere'].index(alarm['trend'])}",
        f"threshold: {alarm['threshold']['id']}",
        f"text: {alarm['text']} ({len(alarm['text'].encode()) + 1} bytes)",
        *values("info", "info"), *values("repair action", "repairActions"),
        f"specific problems: {len(alarm['specificProblems'])}, "
        f"monitored attributes: {len(alarm['monitoredAttributes'])}"])


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

    @unittest.skipUnless(os.environ.get("ALARMS_READER"), "there is no reader")
    def test_alarms_are_those_of_another_reader(self):
        """Of the program in C that knows the standard's header alone."""
        printed = output(os.environ["ALARMS_READER"], LOG).decode()
        alarms = document("alarms --history", LOG)["alarms"]
        self.assertEqual(len(alarms), 5)
        for alarm in alarms:
            self.assertIn(as_reader_prints(alarm), printed)


unittest.main()
