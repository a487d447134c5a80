"""The programs in pages, compiled and run: each call has to send its alarm.

usage: examples_test.py REPOSITORY LIBRARY COMPILER [FLAG...]
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

REPOSITORY, LIBRARY, *COMPILER = (pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), *sys.argv[3:])
LOAD_MODULES = REPOSITORY / "examples/loadmodules"


def sent_by(program):
    """The objects of the alarms that `program` sends as the example load module."""
    with tempfile.TemporaryDirectory() as folder:
        log = pathlib.Path(folder) / "log"
        application = folder + "/application"
        subprocess.run([*COMPILER, "-std=c++17", "-x", "c++", "-", "-o", application,
                        f"-I{REPOSITORY}/include", "-x", "none", LIBRARY, f"-Wl,-rpath,{LIBRARY.parent}"],
                       input=program, text=True, check=True)
        clean = {name: value for name, value in os.environ.items() if not name.startswith("RUXA_")}
        told = subprocess.run([application], check=True, text=True, stderr=subprocess.PIPE, env={
            **clean, "RUXA_NTF_LOG": str(log), "VELK_MANIFEST_DIR": str(LOAD_MODULES),
            "ZBN_NO": "CXC1370001", "ZBN_REV": "R1A", "SYSTEM_UUID": "system", "COMPUTE_NAME": "compute"})
        if told.stderr:
            raise AssertionError(told.stderr)
        text = log.read_text(encoding="utf-8") if log.exists() else ""
        return re.findall(r'"notificationObject":"([^"]*)"', text)


class Examples(unittest.TestCase):
    def test_programs_in_pages(self):
        programs = [(page, program)
                    for depth in ("", "*/", "*/*/") for page in REPOSITORY.glob(depth + "*.md")
                    for program in re.findall(r"^```cpp\n(.*?)^```$", page.read_text(encoding="utf-8"), re.M | re.S)]
        self.assertTrue(programs)
        for page, program in programs:
            with self.subTest(page=page.relative_to(REPOSITORY)):
                self.assertEqual(sent_by(program), re.findall(r'->(?:raise|cease)\w+\("([^"]*)"', program))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
