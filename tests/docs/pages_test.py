"""The pages against the code, the tool and each other.

usage: pages_test.py REPOSITORY, with the built DOLQCTL and LIBRARY, and COMPILER with its flags, in
the environment. Without one, what needs it is skipped.
"""

import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

REPOSITORY = pathlib.Path(sys.argv.pop(1)).resolve()
DOLQCTL, LIBRARY, COMPILER = (os.environ.get(name) for name in ("DOLQCTL", "LIBRARY", "COMPILER"))
PAGES = [path for depth in ("", "*/", "*/*/", "*/*/*/") for path in REPOSITORY.glob(depth + "*.md")
         if path.relative_to(REPOSITORY).parts[0] not in {"out", "build"}]
CLEAN = {name: value for name, value in os.environ.items()
         if not re.match("RUXA_|ZBN_|VELK_|XDG_|SYSTEM_UUID|COMPUTE_NAME|COLUMNS", name)}


def read(path):
    return (REPOSITORY / path).read_text(encoding="utf-8")


# What stands behind a block's first fence, and who runs or compiles such a block as it is printed.
RUN = {"sh": "scripts/test-commands", "": "here", "cpp": "here", "cmake": None, "xml": None}


def blocks(page):
    """(language, text) of each fenced block."""
    return re.findall(r"^```(.*)\n((?:.*\n)*?)```$", read(page), re.MULTILINE)


def steady(text):
    """Without what differs from run to run: times, ages, and blanks that line them up."""
    text = re.sub(r"\b\d{4}-\d\d-\d\d([T ]\d\d:\d\d(:\d\d)?Z?)?|(?<![\w:])\d\d:\d\d(:\d\d)?\b", "TIME", text)
    text = re.sub(r"\b\d[\d.]* ?(ms|s|min|h|d)\b", "AGE", text)
    text = re.sub(r"\bnotification \d+", "notification ID", text)
    return [re.sub(r"  +", "  ", line).rstrip() for line in text.splitlines() if line.strip()]


def sent_by(program):
    """The objects of the alarms that `program` sends as the example load module."""
    with tempfile.TemporaryDirectory() as folder:
        log = pathlib.Path(folder) / "log"
        application = folder + "/application"
        subprocess.run([*COMPILER.split(), "-std=c++17", "-x", "c++", "-", "-o", application,
                        f"-I{REPOSITORY}/include", "-x", "none", LIBRARY,
                        f"-Wl,-rpath,{os.path.dirname(LIBRARY)}"], input=program, text=True, check=True)
        told = subprocess.run([application], check=True, text=True, stderr=subprocess.PIPE, env=CLEAN | {
            "RUXA_NTF_LOG": str(log), "VELK_MANIFEST_DIR": str(REPOSITORY / "examples/loadmodules"),
            "ZBN_NO": "CXC1370001", "ZBN_REV": "R1A", "SYSTEM_UUID": "system", "COMPUTE_NAME": "compute"})
        if told.stderr:
            raise AssertionError(told.stderr)
        text = log.read_text(encoding="utf-8") if log.exists() else ""
        return re.findall(r'"notificationObject":"([^"]*)"', text)


class Examples(unittest.TestCase):
    maxDiff = None

    def test_every_block_of_the_readme_is_run(self):
        for language, text in blocks("README.md"):
            with self.subTest(block=text.splitlines()[0]):
                self.assertIn(language, RUN, "no test runs blocks of this kind")
                self.assertEqual(language == "", text.startswith("$ "),
                                 "commands are blocks of sh, transcripts begin with '$ '")
        prose = re.sub(r"^```.*\n(?:.*\n)*?```$", "", read("README.md"), flags=re.MULTILINE)
        self.assertEqual(re.findall(r"\n\n    \S.*", prose), [], "indented: nobody runs these blocks")

    @unittest.skipUnless(LIBRARY, "the library is not built with the embedded platform")
    def test_each_call_of_a_program_sends_its_alarm(self):
        programs = [(page, text) for page in PAGES for language, text in blocks(page) if language == "cpp"]
        self.assertTrue(programs)
        for page, program in programs:
            with self.subTest(page=page):
                self.assertEqual(sent_by(program), re.findall(r'->(?:raise|cease)\w+\("([^"]*)"', program))

    @unittest.skipUnless(DOLQCTL, "the tool is not built")
    def test_transcripts_are_what_the_tool_prints(self):
        lines = "".join(text for language, text in blocks("README.md") if language == "").splitlines()
        commands = [line[2:] for line in lines if line.startswith("$ ")]
        self.assertTrue(commands)
        expected = "".join("\n" + (line if not line.startswith("$ ") else "\x1e") for line in lines)
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "examples").symlink_to(REPOSITORY / "examples")
            actual = subprocess.run(
                ["bash", "-c", "\n".join(f"printf '\\n\\x1e\\n'\n{command}" for command in commands)],
                cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                text=True, check=False, env=CLEAN | {
                    "PATH": f"{os.path.dirname(DOLQCTL)}:{os.environ['PATH']}", "LC_ALL": "C.UTF-8",
                    "TZ": "UTC", "HOME": folder}).stdout
        for command, shown, printed in zip(commands, expected.split("\x1e")[1:], actual.split("\x1e")[1:],
                                           strict=True):
            with self.subTest(command=command):
                self.assertEqual(steady(printed.replace(folder, "/home/me")), steady(shown))


class Schemas(unittest.TestCase):
    def refused(self, text):
        """The lines that the schema of the text's root element refuses."""
        schema = "load-modules.xsd" if "<loadModules" in text else "alarm-mapping.xsd"
        command = ["xmllint", "--noout", "--nonet", "--schema", REPOSITORY / "schema" / schema, "-"]
        told = subprocess.run(command, input=text, text=True, check=False, stderr=subprocess.PIPE).stderr
        return sorted({int(line) for line in re.findall(r"^-:(\d+): element", told, re.MULTILINE)})

    @unittest.skipUnless(shutil.which("xmllint"), "not installed: xmllint")
    def test_accept_examples_and_refuse_each_mistake(self):
        examples = [text for page in ("README.md", "docs/mapping-files.md") for language, text in blocks(page)
                    if language == "xml"]
        self.assertGreaterEqual(len(examples), 2)
        files = [*REPOSITORY.glob("examples/loadmodules/*.xml"),
                 *REPOSITORY.glob("examples/loadmodules/alarm-client/*.xml"),
                 REPOSITORY / "tests/second-platform/mappings.xml"]
        self.assertGreaterEqual(len(files), 7)
        examples += map(read, files)
        for text in examples:
            self.assertEqual(self.refused(text), [], text)
        # Each line holds one mistake, but for the first and the last.
        self.assertEqual(self.refused("""\
<alarmMappings> <mapping faultid="2147483647" minor_type_id="-2147483648"/>
<mapping faultid="1" minor_type_id="2147483648"/>
<mapping faultid="0x10" minor_type_id="2"/>
<mapping minor_type_id="2"/>
<mapping faultid="2"/>
<mapping faultid="3" minor_type_id="2" managed_object_class="A B"/>
<mapping faultid="3" minor_type_id="2" managed_object_class="A,,B"/>
<mapping faultid="3" minor_type_id="2" managed_objct_class="A"/>
<mapping faultid="4" minor_type_id="2" managed_object_class="A"/> <mapping faultid="4" minor_type_id="3" managed_object_class="A"/>
<maping faultid="5" minor_type_id="2"/>
</alarmMappings>"""), list(range(2, 11)))
        self.assertEqual(self.refused("""\
<loadModules> <loadModule productNumber="" revision=""/>
<loadModule productNumber="P"/>
<loadModule productNumber="P" revision="R"> <file tag="t" path=""/> </loadModule>
<loadModule productNumber="P" revision="R"> <file tag="t"/> </loadModule>
<loadmodule productNumber="P" revision="R"/>
</loadModules>"""), list(range(2, 6)))


# The statements that trace, apart from the definitions of the macros.
STATEMENT = re.compile(r'(?<!#define )\bDOLQ_(?:TRACE|DROP)\((?!__VA_ARGS__)')
# A statement's group and its format, which may be split into several literals. A drop names the
# lost alarm before its trace.
TRACE = re.compile(r'\bDOLQ_(?:TRACE|DROP\(\s*\w+\([^()]*\),)[\s(]*[^,]+,\s*(\w+)\s*,'
                   r'\s*((?:"(?:\\.|[^"\\])*"\s*)+)[,)]')
LITERAL = re.compile(r'"((?:\\.|[^"\\])*)"')


class Troubleshooting(unittest.TestCase):
    def test_explains_every_failure_trace_and_no_message_that_is_gone(self):
        traces = []  # group and text
        for path in [*(REPOSITORY / "src").rglob("*.cpp"), *(REPOSITORY / "src").rglob("*.h")]:
            matches = TRACE.findall(read(path))
            self.assertEqual(len(matches), len(STATEMENT.findall(read(path))), f"understood of {path}")
            traces += [(group, re.sub(r'\\(["\\])', r"\1", "".join(LITERAL.findall(literals))))
                       for group, literals in matches]
        page = read("docs/troubleshooting.md")
        messages = page[page.index("\n## Failure messages"):page.index("\n## Error codes")]
        documented = set(re.findall(r"^\| `(.+?)` \|", messages, re.MULTILINE))
        self.assertEqual({text for group, text in traces if group == "kFailure"} - documented, set())
        self.assertEqual(documented - {text for _, text in traces}, set())


def anchors(page):
    """The names that headings get: lower case, blanks as hyphens, other punctuation dropped."""
    for heading in re.findall(r"^#+ (.+)$", read(page), re.MULTILINE):
        yield re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


# What each folder may include of others; all may include the public headers and the platform's.
BELOW = {"common": set(), "platform": {"common"}, "src": {"common"},
         "tools": {"common", "platform", "src"}, "bench": {"common", "platform", "src"}}
TOOL = pathlib.Path("tools/dolqctl")


def includes(top):
    """The sources below a folder, each with the folder of a header that it includes in quotes."""
    for source in [*(REPOSITORY / top).rglob("*.h"), *(REPOSITORY / top).rglob("*.cpp")]:
        for included in re.findall(r'^#include "(.+)"', read(source), re.MULTILINE):
            for folder in (source.parent, REPOSITORY, REPOSITORY / "src", REPOSITORY / TOOL):
                if (folder / included).is_file():
                    header = (folder / included).resolve().relative_to(REPOSITORY)
                    yield source.relative_to(REPOSITORY), header.parent
                    break


class Repository(unittest.TestCase):
    def test_folders_include_what_is_below_them(self):
        for top, below in BELOW.items():
            found = list(includes(top))
            self.assertTrue(found, top)
            for source, folder in found:
                self.assertIn(folder.parts[0], below | {top}, f"{source}: {folder}")
                if TOOL in (folder, *folder.parents):
                    self.assertIn(folder, {TOOL, source.parent}, f"{source} shares a subcommand's folder")

    def test_has_no_dead_link(self):
        install = read("cmake/RuxaInstall.cmake")
        installed = [REPOSITORY / page for page in re.findall(r"\}/(docs/\S+\.md)", install)]
        self.assertTrue(installed)
        for page in PAGES:
            text = re.sub(r"```.*?```", "", read(page), flags=re.DOTALL)
            for link in re.findall(r"\]\((?![a-z]+:)([^)\s]+)\)", text):
                path, _, anchor = link.partition("#")
                target = page.parent / path if path else page
                self.assertTrue(target.exists(), f"{page}: {link}")
                self.assertTrue(not anchor or anchor in anchors(target), f"{page}: {link}")
                self.assertTrue(page not in installed or target in installed, f"{page}: not installed: {link}")

    def test_pictures_are_rendered_from_their_sources(self):
        sources = sorted((REPOSITORY / "docs" / "pictures").glob("*.dot"))
        self.assertTrue(sources)
        for source in sources:
            digest = hashlib.sha256(source.read_bytes()).hexdigest()
            self.assertEqual(re.findall(r"<!-- source sha256 (\w+) -->", read(source.with_suffix(".svg"))),
                             [digest], f"{source.name}: run docs/pictures/render")

    def test_changelog_begins_with_the_version(self):
        version = re.search(r"project\([^)]*VERSION (\S+)", read("CMakeLists.txt")).group(1)
        entries = re.findall(r"^## \[(.+?)\]", read("CHANGELOG.md"), re.MULTILINE)
        self.assertEqual([entry for entry in entries if entry != "Unreleased"][0], version)


if __name__ == "__main__":
    unittest.main()
