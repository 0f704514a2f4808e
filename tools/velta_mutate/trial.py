"""Tries changes against the tests of a folder.

Each source is compiled once, with a switch at each change that can have one, and each test is linked
once with these sources: to try a change then takes no more than to run a test. What can have no
switch is compiled and linked for itself."""

import collections
import concurrent.futures
import json
import os
import re
import resource
import shutil
import subprocess
import threading
import time
from pathlib import Path

from .changes import ROOT, with_switches

# A development build in which each source is compiled for itself.
BUILD = ROOT / "build/mutants"
WORK = BUILD / "tried"
HERE = Path(__file__).resolve().parent

JOBS = 2
SECONDS = 120
LEAST_SECONDS = 20
LEAST_WAIT = 60
MEMORY = 8 * 1024**3
REFUSED = 77
QUICK_LINKER = "-fuse-ld=mold" if shutil.which("mold") else ""


class Test:
    """A test of a program, how the program is linked, and how long the test takes unchanged."""

    def __init__(self, name, program, link):
        self.name = name
        self.program = program
        self.arguments = [] if name == program else [name]
        self.link = link
        self.seconds = SECONDS / 4


def programs_of(folder):
    """The names of the tests of each program of a folder, after its CMakeLists.txt."""
    text = (ROOT / "tests" / folder / "CMakeLists.txt").read_text()
    programs = {name: [name] for name in re.findall(r"^velta_test\((\w+)", text, re.M)}
    for program, names in re.findall(r"^velta_tests\((\w+)[^)]*?TESTS\s([^)]*?)\sUSES", text, re.M):
        programs[program] = names.split()
    return programs


def configure():
    """Makes the build, where there is none, and else brings its rules up to date."""
    if (BUILD / "build.ninja").exists():
        configured = ["ninja", "-C", BUILD, "build.ninja"]
    else:
        configured = ["cmake", "--preset", "dev", "-B", BUILD, "-DVELTA_AT_ONCE=1"]
    subprocess.run(configured, cwd=ROOT, check=True, stdout=subprocess.DEVNULL)


def tests_of(folder, spared):
    """The tests of a folder."""
    tests = []
    for program, names in programs_of(folder).items():
        commands = subprocess.run(["ninja", "-C", BUILD, "-t", "commands", program], check=True,
                                  capture_output=True, text=True).stdout.strip().split("\n")
        link = next(line for line in commands if re.search(rf" -o \S+/{program} ", line))
        tests += [Test(name, program, link) for name in names if name not in spared]
    return tests


def compile_commands():
    entries = json.loads((BUILD / "compile_commands.json").read_text())
    return {entry["file"]: entry["command"] for entry in entries}


def bounded(seconds):
    resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def shell(command):
    """What a command in the build says where it fails, or nothing."""
    done = subprocess.run(["sh", "-c", command], cwd=BUILD, capture_output=True, text=True)
    return done.stderr + done.stdout + "failed" if done.returncode else None


def linked(test, objects, binary):
    """Links a test's program with these objects in place of the sources that they are of."""
    command = re.sub(rf"-o \S+/{test.program} ", f"{QUICK_LINKER} -o {binary} {objects} ", test.link)
    if trouble := shell(command):
        raise SystemExit(f"{test.program} could not be linked: {command}\n{trouble}")


def object_of(command, source, text, place, extra=""):
    """Compiles a text in place of a source; what the compiler says where it fails, or nothing."""
    changed = place / source.name
    changed.write_text(text)
    command = re.sub(r" -o \S+", f" -o {place / source.stem}.o", command.replace("-Werror", "-w"))
    command = command.replace(f" -c {source}", f" {extra} -c {changed}")
    return shell(command)


class Place:
    """Where one test at a time runs."""

    def __init__(self, path):
        self.path = path
        (self.path / "bin").mkdir(parents=True, exist_ok=True)
        self.home = self.path / "home"
        (self.home / "run").mkdir(parents=True, exist_ok=True)
        (self.home / "run").chmod(0o700)
        resources = self.path / "bin/resources"
        if not resources.is_symlink():
            resources.symlink_to(BUILD / "bin/resources")

    def runs(self, binary, test, change):
        """How a test ends, within ten times its usual seconds of the processor and four times those
        of the clock, which a busy computer may stretch; its first failure ends it."""
        environment = {**os.environ, "QT_QPA_PLATFORM": "offscreen", "HOME": str(self.home),
                       "XDG_RUNTIME_DIR": str(self.home / "run"), "VELTA_CHANGE": str(change)}
        process = subprocess.Popen([binary, *test.arguments], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                   start_new_session=True, cwd=self.path, env=environment,
                                   preexec_fn=lambda: bounded(int(max(LEAST_SECONDS, 10 * test.seconds))))
        watch = threading.Timer(max(LEAST_WAIT, 4 * test.seconds), lambda: os.killpg(process.pid, 9))
        watch.start()
        try:
            if any(line.startswith(b"FAIL!") for line in process.stdout):
                os.killpg(process.pid, 9)
            return process.wait()
        finally:
            watch.cancel()
            process.stdout.close()


class Trial:
    """Tries changes, several at a time, and remembers which test notices what."""

    def __init__(self, folder, tests):
        self.tests = tests
        self.commands = compile_commands()
        self.deadly = collections.Counter()
        self.work = WORK / folder.replace("/", "-")
        self.memory = self.work / "killers.json"
        self.killers = json.loads(self.memory.read_text()) if self.memory.exists() else {}
        self.thread = threading.local()
        self.places = iter(range(10**9))
        self.numbers = {}

    def survivors_of_last_time(self):
        return {key for key, killer in self.killers.items() if not killer}

    # ---- With switches ----------------------------------------------------------------------

    def switched_object(self, source, mutants):
        """Compiles a source with all the switches that the compiler takes, and gives those."""
        text = source.read_text()
        mutants = {number: mutant for number, mutant in mutants.items()
                   if mutant.switched is not None}
        while mutants:
            trouble = object_of(self.commands[str(source)], source, with_switches(text, mutants),
                                self.work / "switched", f"-include {HERE}/switches.h")
            if not trouble:
                break
            mutants = without_troublesome(mutants, trouble, source.name)
        return mutants

    def prepare(self, mutants):
        """Links the tests with all changes that can have a switch."""
        place = Place(self.work / "switched")
        by_source = collections.defaultdict(dict)
        for number, mutant in enumerate(mutants, 1):
            by_source[mutant.source][number] = mutant
        with concurrent.futures.ThreadPoolExecutor(JOBS) as pool:
            taken = list(pool.map(lambda item: self.switched_object(*item), by_source.items()))
        self.numbers = {mutant: number for switched in taken for number, mutant in switched.items()}
        shell(f"cc -O1 -fPIC -c {HERE}/switches.c -o {place.path}/velta-change.o")
        objects = " ".join([f"{place.path}/velta-change.o"] + [
            f"{place.path}/{source.stem}.o" for source, some in zip(by_source, taken) if some])
        for test in {test.program: test for test in self.tests}.values():
            linked(test, objects, place.path / "bin" / test.program)
        for test in self.tests:
            start = time.monotonic()
            if place.runs(place.path / "bin" / test.program, test, 0) != 0:
                raise SystemExit(f"{test.name} fails or takes {SECONDS} s with nothing changed: "
                                 f"--without {test.name}")
            test.seconds = time.monotonic() - start

    # ---- One by one -------------------------------------------------------------------------

    def code(self, mutant, text):
        """The code that the compiler makes of a text, without the marks of debuggers; nothing where
        it makes none."""
        path = self.place().path
        if object_of(self.commands[str(mutant.source)], mutant.source, text, path):
            return None
        shell(f"objcopy --strip-debug {path / mutant.source.stem}.o {path}/bare.o")
        return (path / "bare.o").read_bytes()

    def is_same(self, mutant, code):
        """Whether the compiler makes the same of a change as of the source."""
        place = self.place()
        if mutant.source not in place.plain:
            changed = (place.path / f"{mutant.source.stem}.o").rename(place.path / "kept.o")
            place.plain[mutant.source] = self.code(mutant, mutant.source.read_text())
            changed.rename(place.path / f"{mutant.source.stem}.o")
        return code == place.plain[mutant.source]

    def place(self):
        if not hasattr(self.thread, "place"):
            self.thread.place = Place(self.work / str(next(self.places)))
            self.thread.place.plain = {}
        return self.thread.place

    # ---- Any --------------------------------------------------------------------------------

    def end_of(self, test, mutant, fresh):
        """How a test ends with a change in it. `fresh` are the programs that were linked with it."""
        place = self.place()
        number = self.numbers.get(mutant)
        binary = self.work / "switched/bin" / test.program
        if number is None:
            binary = place.path / "bin" / test.program
            if test.program not in fresh:
                linked(test, f"{place.path / mutant.source.stem}.o", binary)
                fresh.add(test.program)
        return place.runs(binary, test, number or 0)

    def outcome(self, mutant):
        """One of "none", "same", "dies", "survives"."""
        if mutant not in self.numbers:
            code = self.code(mutant, mutant.text)
            if code is None:
                return "none"
            if self.is_same(mutant, code):
                return "same"
        killer = None
        fresh = set()
        for test in self.ranked(mutant):
            end = self.end_of(test, mutant, fresh)
            if end == REFUSED:
                return "none"
            if end != 0:
                killer = test.name
                break
        if not killer and mutant in self.numbers:
            code = self.code(mutant, mutant.text)
            if code is None or self.is_same(mutant, code):
                return "none" if code is None else "same"
        self.deadly[killer] += 1
        self.killers[mutant.key()] = killer
        return "dies" if killer else "survives"

    def ranked(self, mutant):
        """The tests in the order to try: the one that noticed this change the last time, the one
        of its source, those that found most, and the quick ones before the slow ones."""
        former = self.killers.get(mutant.key())
        own = f"{mutant.source.stem}Test"
        return sorted(self.tests, key=lambda test: (test.name != former, test.name != own,
                                                    -self.deadly[test.name], test.seconds))

    def outcomes(self, mutants):
        """Each change with what became of it; an interruption ends with those that are under way."""
        self.prepare(mutants)
        pool = concurrent.futures.ThreadPoolExecutor(JOBS)
        try:
            yield from zip(mutants, pool.map(self.outcome, mutants))
        except KeyboardInterrupt:
            pass
        finally:
            pool.shutdown(cancel_futures=True)
            self.memory.write_text(json.dumps(dict(self.killers), indent=1))


def without_troublesome(mutants, trouble, name):
    """The changes without those on lines that the compiler does not take."""
    for pattern in (rf"{name}:(\d+):\d+: error", rf"{name}:(\d+):\d+:"):
        lines = {int(line) for line in re.findall(pattern, trouble)}
        kept = {number: each for number, each in mutants.items() if each.line not in lines}
        if len(kept) < len(mutants):
            return kept
    return {}
