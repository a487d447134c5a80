"""The README's blocks: each is of a kind that some test runs, and the tool prints what they show.

usage: readme_test.py REPOSITORY [DOLQCTL]
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

DOLQCTL = pathlib.Path(sys.argv.pop(2)).resolve() if len(sys.argv) > 2 else None
REPOSITORY = pathlib.Path(sys.argv.pop(1))
README = (REPOSITORY / "README.md").read_text(encoding="utf-8")

# What stands behind the first fence, and who runs or compiles such a block as it is printed.
RUN = {"sh": "scripts/test-commands", "": "here", "cpp": "tests/docs/examples_test.py", "cmake": None, "xml": None}


def blocks():
    """(language, text) of each fenced block."""
    return re.findall(r"^```(.*)\n((?:.*\n)*?)```$", README, re.MULTILINE)


def steady(text):
    """Without what differs from run to run: times, ages, and blanks that line them up."""
    text = re.sub(r"\b\d{4}-\d\d-\d\d([T ]\d\d:\d\d(:\d\d)?Z?)?|(?<![\w:])\d\d:\d\d(:\d\d)?\b", "TIME", text)
    text = re.sub(r"\b\d+ ?(ms|s|min|h|d)\b", "AGE", text)
    text = re.sub(r"\bnotification \d+", "notification ID", text)
    return [re.sub(r"  +", "  ", line).rstrip() for line in text.splitlines() if line.strip()]


class Readme(unittest.TestCase):
    maxDiff = None

    def test_every_block_is_run(self):
        for language, text in blocks():
            with self.subTest(block=text.splitlines()[0]):
                self.assertIn(language, RUN, "no test runs blocks of this kind")
                self.assertEqual(language == "", text.startswith("$ "),
                                 "commands are blocks of sh, transcripts begin with '$ '")
        prose = re.sub(r"^```.*\n(?:.*\n)*?```$", "", README, flags=re.MULTILINE)
        self.assertEqual(re.findall(r"\n\n    \S.*", prose), [], "indented: nobody runs these blocks")

    def test_commands_are_there(self):
        commands = "".join(text for language, text in blocks() if language == "sh")
        scripts = re.findall(r"^(?:sudo )?(scripts/\S+)", commands, re.MULTILINE)
        self.assertTrue(scripts)
        self.assertEqual([path for path in scripts if not os.access(REPOSITORY / path, os.X_OK)], [])

    @unittest.skipUnless(DOLQCTL, "the tool is not built")
    def test_transcripts_are_what_the_tool_prints(self):
        lines = "".join(text for language, text in blocks() if language == "").splitlines()
        commands = [line[2:] for line in lines if line.startswith("$ ")]
        self.assertTrue(commands)
        expected = "".join("\n" + (line if not line.startswith("$ ") else "\x1e") for line in lines)
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "examples").symlink_to((REPOSITORY / "examples").resolve())
            kept = {name: value for name, value in os.environ.items()
                    if not re.match("RUXA_|ZBN_|VELK_|XDG_|SYSTEM_UUID|COMPUTE_NAME|COLUMNS", name)}
            actual = subprocess.run(
                ["bash", "-c", "\n".join(f"printf '\\n\\x1e\\n'\n{command}" for command in commands)],
                cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                text=True, check=False, env=kept | {
                    "PATH": f"{DOLQCTL.parent}:{os.environ['PATH']}", "LC_ALL": "C.UTF-8", "TZ": "UTC",
                    "HOME": folder}).stdout
        for command, shown, printed in zip(commands, expected.split("\x1e")[1:], actual.split("\x1e")[1:],
                                           strict=True):
            with self.subTest(command=command):
                self.assertEqual(steady(printed.replace(folder, "/home/me")), steady(shown))


if __name__ == "__main__":
    unittest.main()
