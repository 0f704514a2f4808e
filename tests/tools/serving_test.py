"""The server of a classroom: what it hands out, in what parts, and what it says at its start."""

import http.client
import signal
import subprocess
import sys
import tempfile
from pathlib import Path
from unittest import TestCase

from velta_content.problems import SourceError
from velta_content.serving import port_of, span_of

TOOL = Path(__file__).resolve().parents[2] / "tools" / "velta-content"
BANK = bytes(range(256)) * 40


class Parts(TestCase):
    def test_a_range_is_from_the_first_byte_to_the_last(self):
        for header, span in (("bytes=0-0", (0, 1)), ("bytes=10-19", (10, 20)), ("bytes=90-", (90, 100)),
                             ("bytes=90-500", (90, 100)), ("bytes=-10", (90, 100)), ("bytes=-500", (0, 100))):
            with self.subTest(header=header):
                self.assertEqual(span_of(header, 100), span)

    def test_what_is_no_single_range_is_none(self):
        for header in ("", "bytes=-", "bytes=5-2", "bytes=0-1,5-6", "items=0-1", "bytes=a-b", "bytes=1"):
            with self.subTest(header=header):
                self.assertIsNone(span_of(header, 100))

    def test_bytes_that_are_not_there_are_told(self):
        for header in ("bytes=100-", "bytes=500-600", "bytes=-0"):
            with self.subTest(header=header), self.assertRaises(ValueError):
                span_of(header, 100)

    def test_a_port_is_a_number(self):
        self.assertEqual((port_of("0"), port_of("8765"), port_of("65535")), (0, 8765, 65535))
        for text in ("", "-1", "65536", "ocho", "80 ", "²", "9" * 5000):
            with self.subTest(text=text[:9]), self.assertRaises(SourceError):
                port_of(text)


class Classroom(TestCase):
    """A server that runs as a command of its own."""

    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory())) / "con espacio"
        (self.folder / "instruments").mkdir(parents=True)
        (self.folder / "catalog.json").write_text('{"rhythms": []}', encoding="utf-8")
        (self.folder / "instruments/quena.sf2").write_bytes(BANK)
        (self.folder.parent / "secreto.txt").write_text("no", encoding="utf-8")

    def run_tool(self, *words):
        return subprocess.run([sys.executable, str(TOOL), "serve", *map(str, words)], capture_output=True,
                              encoding="utf-8", check=False)

    def start(self):
        """The running server and its port."""
        server = self.enterContext(subprocess.Popen([sys.executable, str(TOOL), "serve", str(self.folder), "--port=0"],
                                                    stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8"))
        self.addCleanup(server.kill)
        said = server.stdout.readline()
        self.assertRegex(said, r"^VELTA_CONTENT_URL=http://[0-9.]+:[0-9]+\n$")
        return server, int(said.rsplit(":", 1)[1])

    def ask(self, port, path, method="GET", **headers):
        connection = http.client.HTTPConnection("127.0.0.1", port, timeout=60)
        connection.request(method, path, headers=headers)
        answer = connection.getresponse()
        return answer.status, answer.headers, answer.read()

    def test_files_have_their_types_and_come_whole_or_in_parts(self):
        _, port = self.start()
        status, head, body = self.ask(port, "/catalog.json")
        self.assertEqual((status, head["Content-Type"], body), (200, "application/json; charset=utf-8", b'{"rhythms": []}'))
        status, head, body = self.ask(port, "/instruments/quena.sf2")
        self.assertEqual((status, head["Content-Type"], head["Accept-Ranges"], body), (200, "audio/x-sfbk", "bytes", BANK))
        status, head, body = self.ask(port, "/instruments/quena.sf2", Range="bytes=300-309")
        self.assertEqual((status, head["Content-Range"], body), (206, f"bytes 300-309/{len(BANK)}", BANK[300:310]))
        status, head, body = self.ask(port, "/instruments/quena.sf2", Range=f"bytes={len(BANK)}-")
        self.assertEqual((status, head["Content-Range"], body), (416, f"bytes */{len(BANK)}", b""))
        status, head, body = self.ask(port, "/instruments/quena.sf2", Range="bytes=0-1,4-5")
        self.assertEqual((status, body), (200, BANK))
        status, head, body = self.ask(port, "/instruments/quena.sf2", method="HEAD", Range="bytes=0-1")
        self.assertEqual((status, head["Content-Length"], body), (206, "2", b""))

    def test_nothing_but_the_files_of_the_folder_is_shown(self):
        _, port = self.start()
        for path in ("/", "/instruments/", "/nada.json", "/../secreto.txt", "/%2e%2e/secreto.txt", "/a%00b"):
            for headers in ({}, {"Range": "bytes=0-1"}):
                with self.subTest(path=path, headers=headers):
                    self.assertEqual(self.ask(port, path, **headers)[0], 404)

    def test_it_ends_when_it_is_told_to(self):
        for how in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(how=how):
                server, _ = self.start()
                server.send_signal(how)
                self.assertEqual(server.wait(60), 0)
                self.assertNotIn("Traceback", server.stderr.read())

    def test_what_cannot_be_served_is_told(self):
        self.assertIn("no hay catálogo", self.run_tool(self.folder / "instruments").stderr)
        self.assertIn("«ocho» no es un puerto", self.run_tool(self.folder, "--port", "ocho").stderr)
        self.assertIn("no conozco la opción «--puerto»", self.run_tool(self.folder, "--puerto", "80").stderr)
        _, port = self.start()
        taken = self.run_tool(self.folder, "--port", port)
        self.assertEqual((taken.returncode, taken.stdout), (1, ""))
        self.assertNotIn("Traceback", taken.stderr)
