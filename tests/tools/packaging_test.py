"""What the packages bring along agrees with the program, and a release is made of a clean clone."""

import os
import re
import subprocess
import tempfile
import xml.etree.ElementTree as ET
from pathlib import Path
from unittest import TestCase

ROOT = Path(__file__).resolve().parents[2]
DESKTOP = ROOT / "desktop"
PROGRAMS = ("velta", "velta-banks", "velta-content", "velta-listen")
MIME_TYPE = "application/x-velta-obra"


def text_of(*names: str) -> str:
    return ROOT.joinpath(*names).read_text(encoding="utf-8")


class ManualTest(TestCase):
    def test_every_program_has_a_page_in_both_languages(self):
        listed = text_of("debian", "velta.manpages") + text_of("debian", "velta-autores.manpages")
        for program in PROGRAMS:
            for language in ("", ".es"):
                page = f"desktop/man/{program}{language}.1"
                with self.subTest(page=page):
                    self.assertIn(page + "\n", listed)
                    self.assertTrue((ROOT / page).read_text(encoding="utf-8").startswith(".TH VELTA"))

    def test_both_languages_tell_of_the_same_options(self):
        for program in PROGRAMS:
            english, spanish = (
                sorted(set(re.findall(r"\\-\\-[a-z]+", text_of("desktop", "man", program + suffix))))
                for suffix in (".1", ".es.1"))
            self.assertEqual(english, spanish, program)

    def test_the_program_and_its_page_tell_of_the_same_options(self):
        told = re.findall(r"^  (--[a-z]+)", text_of("src", "app", "AboutVelta.cpp"), re.MULTILINE)
        self.assertGreaterEqual(len(told), 5)
        page = text_of("desktop", "man", "velta.1").replace("\\-", "-")
        for option in told:
            self.assertIn(option, page)


class InstalledListenTest(TestCase):
    """The script of velta-listen as it lies in a package: beside the program, without sources."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.home = Path(folder.name) / "home"
        self.home.mkdir()
        self.installed = Path(folder.name) / "velta"
        tools = self.installed / "tools"
        tools.mkdir(parents=True)
        for program in (tools / "velta-content", self.installed / "velta-listen"):
            program.write_text(f'#!/bin/sh\necho "{program.name} $*"\n', encoding="utf-8")
            program.chmod(0o755)
        script = tools / "velta-listen"
        script.write_bytes((ROOT / "tools" / "velta-listen").read_bytes())
        script.chmod(0o755)

    def test_help_is_all_that_it_gives_when_asked_for_it(self):
        for word in ("--help", "-h"):
            run = subprocess.run([self.installed / "tools" / "velta-listen", word], check=True,
                                 capture_output=True, text=True, env={"HOME": str(self.home), "PATH": os.environ["PATH"]})
            self.assertEqual((run.stdout, run.stderr), ("velta-listen --help\n", ""))
            self.assertEqual(list(self.home.iterdir()), [])


class DesktopTest(TestCase):
    def test_entry_metainfo_and_type_name_one_kind_of_file(self):
        entry = text_of("desktop", "velta.desktop")
        self.assertIn(f"MimeType={MIME_TYPE};\n", entry)
        self.assertIn("Exec=velta %f\n", entry)
        metainfo = ET.parse(DESKTOP / "org.ovelin.velta.metainfo.xml")
        self.assertEqual(metainfo.findtext("provides/mediatype"), MIME_TYPE)
        self.assertEqual(metainfo.findtext("launchable"), "velta.desktop")
        kinds = ET.parse(DESKTOP / "velta-obra.xml")
        kind = kinds.find("{*}mime-type")
        self.assertEqual(kind.get("type"), MIME_TYPE)
        self.assertEqual(kind.find("{*}glob").get("pattern"), "*.velta")
        self.assertIn('kSuffix = ".velta"', text_of("src", "storage", "WorkArchive.h"))

    def test_what_is_english_is_spanish_too(self):
        entry = text_of("desktop", "velta.desktop")
        for key in ("GenericName", "Comment", "Keywords"):
            self.assertRegex(entry, rf"(?m)^{key}=.")
            self.assertRegex(entry, rf"(?m)^{key}\[es\]=.")
        metainfo = text_of("desktop", "org.ovelin.velta.metainfo.xml")
        for tag in ("summary", "p", "li", "caption"):
            english = len(re.findall(rf"<{tag}>", metainfo))
            self.assertEqual(english, len(re.findall(rf'<{tag} xml:lang="es">', metainfo)), tag)


class ReleaseTest(TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.clone = Path(folder.name)
        for name in ("tools/release", "tools/setup.sh", "CMakeLists.txt"):
            target = self.clone / name
            target.parent.mkdir(exist_ok=True)
            target.write_bytes((ROOT / name).read_bytes())
            target.chmod(0o755)
        self.git("init", "-q")

    def version(self) -> str:
        return re.search(r"project\(velta VERSION ([0-9.]+) ", text_of("CMakeLists.txt"))[1]

    def git(self, *words: str) -> None:
        subprocess.run(["git", "-c", "user.name=x", "-c", "user.email=x@x.invalid", *words],
                       cwd=self.clone, check=True, capture_output=True)

    def commit(self, changelog: str) -> None:
        (self.clone / "CHANGELOG.md").write_text(changelog, encoding="utf-8")
        self.git("add", "-A")
        self.git("commit", "-q", "-m", "x")

    def refusal(self) -> str:
        run = subprocess.run([self.clone / "tools" / "release"], capture_output=True, text=True, check=False)
        self.assertEqual(run.returncode, 1)
        self.assertFalse((self.clone / "build").exists())
        return run.stderr

    def test_a_clone_with_changes_is_refused(self):
        self.commit(f"## [{self.version()}] - 2026-11-22\n\n- Everything.\n")
        (self.clone / "CHANGELOG.md").write_text("something else", encoding="utf-8")
        self.assertIn("not committed", self.refusal())

    def test_a_clone_with_a_file_of_its_own_is_refused(self):
        self.commit(f"## [{self.version()}] - 2026-11-22\n\n- Everything.\n")
        (self.clone / "notes.txt").write_text("mine", encoding="utf-8")
        self.assertIn("not committed", self.refusal())

    def test_a_version_that_nobody_tells_of_is_refused(self):
        self.commit("## [Unreleased]\n\n- Everything.\n\n## [0.9.0] - 2026-01-01\n\n- Something.\n")
        self.assertIn("tells nothing of version", self.refusal())
