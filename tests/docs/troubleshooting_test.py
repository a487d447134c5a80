"""docs/troubleshooting.md against the trace messages of the source code.

usage: troubleshooting_test.py REPOSITORY
"""

import pathlib
import re
import sys
import unittest

REPOSITORY = pathlib.Path(sys.argv.pop(1))

# The statements that trace, apart from the definitions of the macros.
STATEMENT = re.compile(r'(?<!#define )\bDOLQ_(?:TRACE|DROP)\((?!__VA_ARGS__)')
# A statement's group and its format, which may be split into several literals. A drop names the
# lost alarm before its trace.
TRACE = re.compile(r'\bDOLQ_(?:TRACE|DROP\(\s*\w+\([^()]*\),)[\s(]*[^,]+,\s*(\w+)\s*,'
                   r'\s*((?:"(?:\\.|[^"\\])*"\s*)+)[,)]')
LITERAL = re.compile(r'"((?:\\.|[^"\\])*)"')


def traces(folder):
    """(group, text) of every trace statement below the folder."""
    found = []
    for path in sorted(folder.rglob("*.cpp")) + sorted(folder.rglob("*.h")):
        source = path.read_text(encoding="utf-8")
        statements = len(STATEMENT.findall(source))
        matches = TRACE.findall(source)
        if len(matches) != statements:
            raise RuntimeError(f"{path}: {statements} trace statements, {len(matches)} understood")
        for group, literals in matches:
            text = "".join(LITERAL.findall(literals))
            found.append((group, re.sub(r'\\(["\\])', r"\1", text)))
    return found


def documented(page):
    """The texts in the first column of the tables of messages."""
    text = page.read_text(encoding="utf-8")
    messages = text[text.index("\n## Failure messages"):text.index("\n## Error codes")]
    return re.findall(r"^\| `(.+?)` \|", messages, re.MULTILINE)


class Troubleshooting(unittest.TestCase):
    page = REPOSITORY / "docs" / "troubleshooting.md"

    def test_explains_every_failure_trace(self):
        failures = {text for group, text in traces(REPOSITORY / "src") if group == "kFailure"}
        texts = sorted(failures - set(documented(self.page)))
        self.assertFalse(texts, "docs/troubleshooting.md lacks a row for\n  " + "\n  ".join(texts))

    def test_explains_no_message_that_is_gone(self):
        texts = {text for _, text in traces(REPOSITORY / "src")}
        self.assertEqual(sorted(set(documented(self.page)) - texts), [])


if __name__ == "__main__":
    unittest.main()
