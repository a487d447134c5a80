"""The XML schemas against every sample of the repository, and against what only they refuse.

usage: schema_test.py REPOSITORY
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

REPOSITORY = pathlib.Path(sys.argv.pop(1))
SCHEMA_OF_ROOT = {"alarmMappings": "alarm-mapping.xsd", "loadModules": "load-modules.xsd"}

# What the example with mistakes is refused for, by the text that the refused line holds. A forgotten
# class is a mapping for objects without one, so the schema has to let fault 5102 pass.
PLANTED_MISTAKES = {
    'faultid="F5103"': "'F5103' is not a valid value",
    'faultid="5104"': "'minor_type_id' is required but missing",
    'faultid="5105 (new)"': "'5105 (new)' is not a valid value",
    'minor_type_id="131112"': "Duplicate key-sequence ['5101', 'Tunnel']",
    'faultid="5106"': "' Port , , Link ,' is not accepted",
    'faultid="5107"': "'' is not accepted",
    "<maping": "'maping': This element is not expected",
}

# What no sample shows: name, root element, its content, whether it is valid.
ROWS = [
    ("largest numbers", "alarmMappings", '<mapping faultid="2147483647" minor_type_id="-2147483648"/>', True),
    ("number beyond 32 bits", "alarmMappings", '<mapping faultid="1" minor_type_id="2147483648"/>', False),
    ("misspelt class list", "alarmMappings", '<mapping faultid="1" minor_type_id="2" managed_objct_class="A"/>', False),
    ("no revision", "loadModules", '<loadModule productNumber="P"/>', False),
    ("file with empty path", "loadModules",
     '<loadModule productNumber="P" revision="R"><file tag="t" path=""/></loadModule>', False),
    ("misspelt element", "loadModules", '<loadmodule productNumber="P" revision="R"/>', False),
]


def refusals(path):
    """What the schema of the file's root element says against it: line numbers and messages."""
    schema = REPOSITORY / "schema" / SCHEMA_OF_ROOT[ElementTree.parse(path).getroot().tag]
    run = subprocess.run(["xmllint", "--noout", "--nonet", "--schema", schema, path],
                         capture_output=True, text=True, check=False)
    if run.returncode not in (0, 3):  # 3: does not validate
        raise RuntimeError(run.stderr)
    found = re.findall(r":(\d+): element .*?Schemas validity error : (.*)", run.stderr)
    assert bool(found) == (run.returncode == 3), run.stderr
    return [(int(line), text) for line, text in found if "No precomputed value" not in text]


class Schemas(unittest.TestCase):
    def test_accept_every_sample_but_the_one_with_mistakes(self):
        samples = sorted((REPOSITORY / "examples" / "loadmodules").rglob("*.xml"))
        samples.append(REPOSITORY / "tests/second-platform/mappings.xml")
        refused = [sample.name for sample in samples if refusals(sample)]
        self.assertGreaterEqual(len(samples), 7)
        self.assertEqual(refused, ["transport.xml"])

    def test_accept_the_examples_of_the_documents(self):
        for page in (REPOSITORY / "README.md", REPOSITORY / "docs/mapping-files.md"):
            examples = re.findall(r"^```xml\n(.*?)^```", page.read_text(encoding="utf-8"), re.M | re.S)
            self.assertTrue(examples, page.name)
            for example in examples:
                with tempfile.NamedTemporaryFile("w", suffix=".xml") as file:
                    file.write(example)
                    file.flush()
                    self.assertEqual(refusals(pathlib.Path(file.name)), [], page.name)

    def test_refuse_each_planted_mistake_and_nothing_else(self):
        path = REPOSITORY / "examples/loadmodules/transport/transport.xml"
        lines = path.read_text(encoding="utf-8").splitlines()
        expected = {next(i for i, line in enumerate(lines, 1) if place in line and "<!--" not in line): message
                    for place, message in PLANTED_MISTAKES.items()}
        found = refusals(path)
        self.assertEqual([line for line, _ in found], sorted(expected))
        for line, message in found:
            self.assertIn(expected[line], message)

    def test_say_what_is_valid(self):
        for name, root, content, valid in ROWS:
            with self.subTest(name), tempfile.NamedTemporaryFile("w", suffix=".xml") as file:
                file.write(f"<{root}>{content}</{root}>")
                file.flush()
                self.assertEqual(refusals(pathlib.Path(file.name)) == [], valid)


if __name__ == "__main__":
    unittest.main()
