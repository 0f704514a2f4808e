"""Hands out the folder of a content server to the computers of a classroom."""

from __future__ import annotations

import re
import signal
import socket
import sys
from functools import partial
from http import HTTPStatus
from http.server import SimpleHTTPRequestHandler, ThreadingHTTPServer
from io import BytesIO
from pathlib import Path
from typing import BinaryIO

from .problems import SourceError

#: Where the program looks on its own computer.
PORT = 8765

_HIGHEST_PORT = 65535
_RANGE = re.compile(r"bytes=(\d*)-(\d*)")

# An address for examples, to which nothing is sent: it only says through which card one goes out.
_ELSEWHERE = ("192.0.2.1", 9)


def port_of(text: str) -> int:
    """A port; 0 for any that is free. Raises SourceError for anything else."""
    if not re.fullmatch(r"[0-9]{1,5}", text) or int(text) > _HIGHEST_PORT:
        raise SourceError(f"«{text}» no es un puerto: va un número hasta {_HIGHEST_PORT}")
    return int(text)


def span_of(header: str, size: int) -> tuple[int, int] | None:
    """The first byte and the one behind the last that a range asks for; None for what is no range.

    Of several ranges none is answered, which the protocol allows: the whole file goes out. Raises
    ValueError where the file has no such bytes.
    """
    match = _RANGE.fullmatch(header.strip())
    if not match or match.group(1) == match.group(2) == "":
        return None
    first, last = match.groups()
    if first:
        start, end = int(first), min(int(last) + 1, size) if last else size
        if last and int(last) < int(first):
            return None
    else:
        start, end = max(size - int(last), 0), size
    if start >= end:
        raise ValueError(header)
    return start, end


class Handler(SimpleHTTPRequestHandler):
    """Files and their ranges; no listing of folders."""

    protocol_version = "HTTP/1.1"
    server_version = "Velta"
    timeout = 60
    extensions_map = SimpleHTTPRequestHandler.extensions_map | {
        ".json": "application/json; charset=utf-8", ".sf2": "audio/x-sfbk"}

    def list_directory(self, path: str) -> BytesIO | None:  # type: ignore[override]
        """Nobody needs to see more than the catalogue."""
        self.send_error(HTTPStatus.NOT_FOUND)
        return None

    def end_headers(self) -> None:
        """Says with every answer that parts of a file may be asked for, and are to be asked anew."""
        self.send_header("Accept-Ranges", "bytes")
        self.send_header("Cache-Control", "no-cache")
        super().end_headers()

    def send_head(self) -> BinaryIO | BytesIO | None:
        """The head of an answer, and what follows it."""
        path = Path(self.translate_path(self.path))
        if "\0" in str(path):
            self.send_error(HTTPStatus.NOT_FOUND)
            return None
        header = self.headers.get("Range")
        if not header or not path.is_file():
            return super().send_head()
        try:
            content = path.read_bytes()
            span = span_of(header, len(content))
        except OSError:
            self.send_error(HTTPStatus.NOT_FOUND)
            return None
        except ValueError:
            self.send_response(HTTPStatus.REQUESTED_RANGE_NOT_SATISFIABLE)
            self.send_header("Content-Range", f"bytes */{len(content)}")
            self.send_header("Content-Length", "0")
            self.end_headers()
            return None
        return self._part(path, content, span) if span else super().send_head()

    def _part(self, path: Path, content: bytes, span: tuple[int, int]) -> BytesIO:
        start, end = span
        self.send_response(HTTPStatus.PARTIAL_CONTENT)
        self.send_header("Content-Type", self.guess_type(str(path)))
        self.send_header("Content-Range", f"bytes {start}-{end - 1}/{len(content)}")
        self.send_header("Content-Length", str(end - start))
        self.end_headers()
        return BytesIO(content[start:end])


def _own_address() -> str:
    """The address under which others in the room see this computer; its own where there is no network."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as out:
        try:
            out.connect(_ELSEWHERE)
            return str(out.getsockname()[0])
        except OSError:
            return "127.0.0.1"


def _stop(_signal: int, _frame: object) -> None:
    raise KeyboardInterrupt


def serve(folder: Path, port: int) -> None:
    """Serves a folder until it is interrupted, and says first what the computers are to be told.

    Raises SourceError for a folder that is none of a content server, OSError for a port that is taken.
    """
    if not (folder / "catalog.json").is_file():
        raise SourceError(f"en {folder} no hay catálogo: primero va velta-content build-server {folder}")
    with ThreadingHTTPServer(("", port), partial(Handler, directory=str(folder))) as server:
        try:
            for ending in (signal.SIGTERM, signal.SIGINT):
                signal.signal(ending, _stop)
            print(f"VELTA_CONTENT_URL=http://{_own_address()}:{server.server_address[1]}", flush=True)
            server.serve_forever()
        except KeyboardInterrupt:
            print("Listo.", file=sys.stderr)
