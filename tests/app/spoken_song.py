"""A song by somebody who neither sees the window nor has a mouse.

Runs the program on a display and a bus of its own and knows of it only what the accessibility bus
tells: names, roles, values and actions. Four bars of chords and melody and a loop are written,
played, saved and exported; the files have to hold them.

    spoken_song.py PROGRAM
"""

import json
import os
import subprocess
import sys
import tempfile
import time
import wave
from pathlib import Path

PATIENCE_SECONDS = 120


def outside(program):
    """Starts what a desktop would have, and itself within it."""
    with tempfile.TemporaryDirectory() as home:
        reader, writer = os.pipe()
        display = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writer), "-screen", "0", "1366x768x24", "-nolisten", "tcp"],
            pass_fds=[writer], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            os.close(writer)
            with os.fdopen(reader) as told:
                number = told.readline().strip()
            run = Path(home, "run")
            run.mkdir(mode=0o700)
            environment = {
                "PATH": os.environ["PATH"], "HOME": home, "XDG_RUNTIME_DIR": str(run),
                "DISPLAY": f":{number}", "LANG": "C.UTF-8", "QT_QPA_PLATFORM": "xcb",
                "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "QT_ACCESSIBILITY": "1"}
            manager = subprocess.Popen(["openbox"], env=environment, stdout=subprocess.DEVNULL,
                                       stderr=subprocess.DEVNULL)
            try:
                return subprocess.run(
                    ["dbus-run-session", "--", sys.executable, __file__, program, "inside"],
                    env=environment, check=False).returncode
            finally:
                manager.terminate()
                manager.wait()
        finally:
            display.terminate()
            display.wait()


def wait_for(what, told):
    """What a question gives as soon as it gives anything."""
    end = time.monotonic() + PATIENCE_SECONDS
    while time.monotonic() < end:
        try:
            answer = what()
        except Exception:  # A part may go while it is asked.
            answer = None
        if answer:
            return answer
        time.sleep(0.1)
    raise SystemExit(f"nothing came of: {told}")


class Listener:
    """Somebody at the accessibility bus."""

    def __init__(self):
        import pyatspi
        from gi.repository import Atspi

        Atspi.set_timeout(2000, 20000)
        self.bus = pyatspi
        desktop = pyatspi.Registry.getDesktop(0)
        self.program = wait_for(
            lambda: next((one for one in desktop if one and one.childCount), None), "the program")

    def find(self, name, role=None, within=None):
        def search(part, depth=0):
            if part.name == name and (role is None or part.getRoleName() == role):
                return part
            if depth < 25:
                for index in range(part.childCount):
                    child = part.getChildAtIndex(index)
                    found = search(child, depth + 1) if child else None
                    if found:
                        return found
            return None

        return wait_for(lambda: search(within or self.program), f"{role or 'part'} {name}")

    def press(self, name, role=None, within=None):
        actions = self.find(name, role, within).queryAction()
        for index in range(actions.nActions):
            if actions.getName(index).lower() in ("press", "toggle"):
                try:
                    actions.doAction(index)
                except Exception:  # A dialog answers when it is closed.
                    pass
                time.sleep(0.4)
                return
        raise SystemExit(f"{name} cannot be pressed")

    def names(self, part):
        parent = self.find(part, "list")
        return [parent.getChildAtIndex(index).name for index in range(parent.childCount)]

    def expect(self, part, names):
        wait_for(lambda: self.names(part) == names, f"{part}: {names}, not {self.names(part)}")

    def focus(self, name):
        wait_for(lambda: self.find(name, "panel").queryComponent().grabFocus(), f"focus {name}")
        time.sleep(0.2)

    def place(self, name, beat):
        slider = self.find(name, "slider").queryValue()
        slider.currentValue = beat
        wait_for(lambda: slider.currentValue == beat, f"{name} at {beat}")

    def key(self, *names):
        """Keys one after the other; "Shift+Right" holds the first."""
        from gi.repository import Atspi

        codes = {"Return": 0xFF0D, "Right": 0xFF53, "PageDown": 0xFF56, "Escape": 0xFF1B,
                 "Shift": 0xFFE1}
        kinds = Atspi.KeySynthType
        for name in names:
            *held, last = name.split("+")
            for one in held:
                Atspi.generate_keyboard_event(self.code(codes[one]), None, kinds.PRESS)
            Atspi.generate_keyboard_event(codes.get(last, ord(last[0])), None, kinds.SYM)
            for one in held:
                Atspi.generate_keyboard_event(self.code(codes[one]), None, kinds.RELEASE)
            time.sleep(0.08)

    @staticmethod
    def code(symbol):
        """The key of the keyboard that gives a symbol."""
        return {0xFFE1: 50}[symbol]


def compose(listener):
    melody = "ceggffedceggfdcc"
    solfege = {"c": "Do", "d": "Re", "e": "Mi", "f": "Fa", "g": "Sol"}
    listener.focus("Piano roll")
    for letter in melody:
        listener.key(letter, "Return", "Shift+Right")
    listener.expect("Notas", [f"{solfege[letter]} 4, compás {place // 4 + 1}, negra"
                              for place, letter in enumerate(melody)])
    listener.key("Escape")

    listener.focus("Arreglo")
    listener.place("Cabezal del arreglo", 0)
    for letter in "cfgc":
        listener.key(letter, "PageDown")
    chords = [f"Acorde {chord}, compás {bar}, 1 compás" for bar, chord in enumerate(
        ["I, Do mayor", "IV, Fa mayor", "V, Sol mayor", "I, Do mayor"], 1)]
    listener.expect("Bloques", chords + ["Melodía (16 notas), compás 1, 8 compases"])

    listener.place("Cabezal del arreglo", 0)
    listener.press("Normal 1")
    wait_for(lambda: len(listener.names("Bloques")) == 6, "a loop")


def play(listener):
    playhead = listener.find("Cabezal del piano roll", "slider").queryValue()
    listener.place("Cabezal del piano roll", 0)
    listener.press("Reproducir")
    wait_for(lambda: playhead.currentValue > 1.0, "a song that plays")
    listener.press("Detener")
    wait_for(lambda: playhead.currentValue == 0.0, "a song that stops")


def fill(listener, text, button):
    """Types into the one field of a dialog, and ends it."""
    dialog = wait_for(lambda: next((window for window in listener.program
                                    if window.getRoleName() in ("dialog", "file chooser")), None),
                      "a dialog")

    def field(part):
        if part.getRoleName() == "text" and part.getState().contains(listener.bus.STATE_EDITABLE):
            return part
        return next((found for found in map(field, part) if found), None)

    wait_for(lambda: field(dialog), "a field").queryEditableText().setTextContents(text)
    listener.press(button, "push button", dialog)


def check(works, exported):
    work = json.loads(wait_for(lambda: [path.read_text() for path in works.glob("*/project.json")],
                               "a saved work")[0])
    notes = work["tracks"][0]["melodyBlocks"][0]["notes"]
    assert [note["startBeat"] for note in notes] == list(range(16)), notes
    assert all(note["durationBeats"] == 1 for note in notes), notes
    degrees = [event["degree"] for bar in work["harmonyTrack"]["blocks"] for event in bar["events"]]
    assert degrees == [1, 4, 5, 1], degrees
    assert any(track["loopBlocks"] for track in work["tracks"])
    wait_for(exported.exists, "an exported file")
    with wave.open(str(exported)) as sound:
        assert sound.getnframes() > 5 * sound.getframerate(), sound.getnframes()
        assert any(sound.readframes(44100))


def inside(program):
    velta = subprocess.Popen([program], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        listener = Listener()
        home = Path(os.environ["HOME"])
        compose(listener)
        play(listener)
        listener.press("Guardar", "push button")
        fill(listener, "Obra de oído", "Aceptar")
        exported = home / "oida.wav"
        listener.press("Audio HQ", "push button")
        fill(listener, str(exported), "Guardar")
        check(home / "Documents" / "Velta", exported)
        print("a song of four bars, composed, played, saved and exported by name")
        return 0
    finally:
        velta.terminate()
        velta.wait()


if __name__ == "__main__":
    sys.exit(inside(sys.argv[1]) if sys.argv[2:] == ["inside"] else outside(sys.argv[1]))
