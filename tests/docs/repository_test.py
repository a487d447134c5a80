"""What the repository's documents say about each other: links, pictures and the version.

usage: repository_test.py REPOSITORY
"""

import hashlib
import pathlib
import re
import sys
import unittest

REPOSITORY = pathlib.Path(sys.argv.pop(1))


def pages():
    return [path for depth in ("", "*/", "*/*/", "*/*/*/") for path in REPOSITORY.glob(depth + "*.md")
            if path.relative_to(REPOSITORY).parts[0] not in {"out", "build"}]


def anchors(page):
    """The names that headings get: lower case, blanks as hyphens, other punctuation dropped."""
    for heading in re.findall(r"^#+ (.+)$", page.read_text(encoding="utf-8"), re.MULTILINE):
        yield re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


# What each folder may include of others; all may include the public headers and the platform's.
BELOW = {"common": set(), "platform": {"common"}, "src": {"common"},
         "tools": {"common", "platform", "src"}, "bench": {"common", "platform", "src"}}


def folder_of(source, included):
    """Where a header lies that is named in quotes in this source, below the repository."""
    for folder in (source.parent, REPOSITORY, REPOSITORY / "src", REPOSITORY / "tools" / "dolqctl"):
        if (folder / included).is_file():
            return (folder / included).resolve().relative_to(REPOSITORY.resolve()).parent
    return None


class Repository(unittest.TestCase):
    def includes(self, top):
        """The sources below a folder, each with where a header lies that it includes."""
        sources = [path for path in (REPOSITORY / top).rglob("*") if path.suffix in {".h", ".cpp"}]
        self.assertTrue(sources, top)
        for source in sources:
            for included in re.findall(r'^#include "(.+)"', source.read_text(encoding="utf-8"),
                                       re.MULTILINE):
                if folder := folder_of(source, included):
                    yield source.relative_to(REPOSITORY), folder

    def test_folders_include_what_is_below_them(self):
        for top, below in BELOW.items():
            for source, folder in self.includes(top):
                self.assertIn(folder.parts[0], below | {top}, f"{source}: {folder}")

    def test_folders_of_the_tool_share_its_top_folder_alone(self):
        top = pathlib.Path("tools/dolqctl")
        for source, folder in self.includes(top):
            if top in (folder, *folder.parents):
                self.assertIn(folder, {top, source.parent}, source)

    def test_has_no_dead_link(self):
        dead = []
        for page in pages():
            text = re.sub(r"```.*?```", "", page.read_text(encoding="utf-8"), flags=re.DOTALL)
            for link in re.findall(r"\]\(([^)\s]+)\)", text):
                if re.match(r"[a-z]+:", link):
                    continue
                target, _, anchor = link.partition("#")
                target = page.parent / target if target else page
                if not target.exists() or (anchor and anchor not in anchors(target)):
                    dead.append(f"{page.relative_to(REPOSITORY)}: {link}")
        self.assertEqual(dead, [])

    def test_installed_pages_link_only_to_each_other(self):
        install = (REPOSITORY / "cmake" / "RuxaInstall.cmake").read_text(encoding="utf-8")
        installed = [REPOSITORY / page for page in re.findall(r"\}/(docs/\S+\.md)", install)]
        self.assertTrue(installed)
        astray = [f"{page.name}: {link}" for page in installed
                  for link in re.findall(r"\]\(([^)#\s]+)", page.read_text(encoding="utf-8"))
                  if page.parent / link not in installed]
        self.assertEqual(astray, [])

    def test_pictures_are_rendered_from_their_sources(self):
        sources = sorted((REPOSITORY / "docs" / "pictures").glob("*.dot"))
        self.assertTrue(sources)
        for source in sources:
            digest = hashlib.sha256(source.read_bytes()).hexdigest()
            picture = source.with_suffix(".svg").read_text(encoding="utf-8")
            rendered_from = re.findall(r"<!-- source sha256 (\w+) -->", picture)
            self.assertEqual(rendered_from, [digest], f"{source.name}: run docs/pictures/render")

    def test_changelog_begins_with_the_version(self):
        version = re.search(r"project\([^)]*VERSION (\S+)",
                            (REPOSITORY / "CMakeLists.txt").read_text(encoding="utf-8")).group(1)
        entries = re.findall(r"^## \[(.+?)\]", (REPOSITORY / "CHANGELOG.md").read_text(encoding="utf-8"),
                             re.MULTILINE)
        self.assertEqual([entry for entry in entries if entry != "Unreleased"][0], version)


if __name__ == "__main__":
    unittest.main()
