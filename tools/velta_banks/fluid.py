"""Plays banks through FluidSynth without a device, to measure what a listener gets."""

import ctypes
import ctypes.util
from types import TracebackType

import numpy as np

from velta_banks.units import RATE, Samples

#: The program's own gain, so that levels are those of the program.
GAIN = 0.6

_LogFunction = ctypes.CFUNCTYPE(None, ctypes.c_int, ctypes.c_char_p, ctypes.c_void_p)
_LOG_LEVELS = 5


@_LogFunction
def _no_log(_level: int, _message: bytes, _data: int) -> None:
    pass


def _library() -> ctypes.CDLL:
    name = ctypes.util.find_library("fluidsynth") or "libfluidsynth.so.3"
    library = ctypes.CDLL(name)
    for maker in ("new_fluid_settings", "new_fluid_synth"):
        getattr(library, maker).restype = ctypes.c_void_p
    library.fluid_set_log_function.restype = ctypes.c_void_p
    for level in range(_LOG_LEVELS):
        library.fluid_set_log_function(level, _no_log, None)
    return library


def _is_soundfont(path: str) -> bool:
    """Whether a file begins as one; FluidSynth's other loaders complain about anything else."""
    with open(path, "rb") as file:
        start = file.read(12)
    return start[:4] == b"RIFF" and start[8:] == b"sfbk"


class Player:
    """One synthesiser with one bank on channel 0; use it in a `with` statement.

    Effects are off: they would smear what is measured. Raises OSError where FluidSynth or the
    bank cannot be loaded.
    """

    def __init__(self, path: str, bank: int = 0, program: int = 0) -> None:
        if not _is_soundfont(path):
            raise OSError(f"no SoundFont: {path}")
        self._lib = _library()
        self._settings = ctypes.c_void_p(self._lib.new_fluid_settings())
        self._number(b"synth.sample-rate", float(RATE))
        self._number(b"synth.gain", GAIN)
        for effect in (b"synth.reverb.active", b"synth.chorus.active"):
            self._lib.fluid_settings_setint(self._settings, effect, 0)
        self._synth = ctypes.c_void_p(self._lib.new_fluid_synth(self._settings))
        self._bank_id = self._lib.fluid_synth_sfload(self._synth, path.encode(), 0)
        if self._bank_id < 0:
            self.close()
            raise OSError(f"FluidSynth does not load {path}")
        self.select(bank, program)

    def _number(self, name: bytes, value: float) -> None:
        self._lib.fluid_settings_setnum(self._settings, name, ctypes.c_double(value))

    def __enter__(self) -> "Player":
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.close()

    def close(self) -> None:
        """Frees the synthesiser; nothing may be played afterwards."""
        self._lib.delete_fluid_synth(self._synth)
        self._lib.delete_fluid_settings(self._settings)

    def select(self, bank: int, program: int) -> bool:
        """Gives the channel a preset of the bank; false if the bank does not have it."""
        status: int = self._lib.fluid_synth_program_select(
            self._synth, 0, self._bank_id, bank, program)
        return status == 0

    def note(self, key: int, velocity: int, held: float, tail: float = 0.0) -> Samples:
        """The left side of one note, held and then released, in seconds; it starts in silence."""
        self._lib.fluid_synth_all_sounds_off(self._synth, 0)
        self._render(64)
        self._lib.fluid_synth_noteon(self._synth, 0, key, velocity)
        sound = self._render(round(held * RATE))
        self._lib.fluid_synth_noteoff(self._synth, 0, key)
        return np.concatenate([sound, self._render(round(tail * RATE))])

    def _render(self, frames: int) -> Samples:
        stereo = np.zeros(2 * frames, dtype=np.float32)
        pointer = stereo.ctypes.data_as(ctypes.c_void_p)
        self._lib.fluid_synth_write_float(self._synth, frames, pointer, 0, 2, pointer, 1, 2)
        return stereo[::2].astype(np.float64)
