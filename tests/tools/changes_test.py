"""Which changes a source allows, and the source with a switch at each of them."""

import shutil
import subprocess
import tempfile
from pathlib import Path
from unittest import TestCase, skipUnless

from velta_mutate.changes import mutants_of, with_switches

SOURCE = """\
#include <algorithm>
#include <cmath>
#include <cstdio>
constexpr int kSize = 3; // 4 + 5
constexpr int doubled(int value)
{
    return value * 2;
}
int main()
{
    int sum = 0;
    bool more = true;
    for (int i = 0; i < kSize; ++i)
        sum += doubled(i) + 1;
    if (!more && sum == 9)
        sum -= 4;
    sum = std::max(sum, 7);
    std::printf("1 + %d %g", sum, std::floor(sum / 2.0));
}
"""


class Changes(TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.source = self.folder / "source.cpp"
        self.source.write_text(SOURCE)
        self.mutants = mutants_of(self.source)

    def enterContext(self, context):
        self.addCleanup(context.__exit__, None, None, None)
        return context.__enter__()

    def test_words_in_comments_and_texts_stay(self):
        places = [mutant.before for mutant in self.mutants if mutant.line in (1, 2, 3)]
        self.assertEqual(places, [])
        self.assertEqual([mutant.new for mutant in self.mutants if mutant.line == 4], ["4"])
        self.assertNotIn("2 + %d", "".join(mutant.text for mutant in self.mutants))

    def test_one_place_is_changed_at_a_time(self):
        for mutant in self.mutants:
            parted = [line for line, former in zip(mutant.text.split("\n"), SOURCE.split("\n")) if line != former]
            self.assertEqual([mutant.after], [line.strip() for line in parted])

    def test_operators_numbers_words_and_lines_are_changed(self):
        changes = {(mutant.line, mutant.old.strip(), mutant.new.strip()) for mutant in self.mutants}
        self.assertLessEqual({(7, "*", "/"), (7, "2", "3"), (12, "true", "false"), (13, "<", "<="), (14, "+", "-"),
                              (14, "+=", "-="), (14, "sum += doubled(i) + 1;", "{}"), (15, "!", ""), (15, "&&", "||"),
                              (17, "std::max", "std::min"), (18, "std::floor", "std::ceil")}, changes)

    def test_switches_leave_the_lines_where_they_are(self):
        switched = with_switches(SOURCE, {number: each for number, each in enumerate(self.mutants, 1)
                                          if each.switched is not None})
        self.assertEqual(switched.count("\n"), SOURCE.count("\n"))

    @skipUnless(shutil.which("c++"), "no compiler")
    def test_a_switch_does_what_its_change_does(self):
        # Without a change, 1 + 3 + 5 are 9, and half of it is rounded down.
        expected = {(13, "<="): "16 8", (14, "-"): "7 3", (14, "{}"): "7 3", (12, "false"): "7 3", (15, ""): "7 3",
                    (15, "!="): "9 4", (16, "5"): "9 4", (7, "/"): "7 3", (7, "3"): "12 6", (4, "4"): "16 8",
                    (17, "std::min"): "7 3", (17, "8"): "9 4", (18, "std::ceil"): "9 5", (18, "3.0"): "9 3"}
        numbered = {number: each for number, each in enumerate(self.mutants, 1) if each.switched is not None}
        tool = Path(__file__).resolve().parents[2] / "tools/velta_mutate"
        (self.folder / "switched.cpp").write_text(with_switches(SOURCE, numbered))
        subprocess.run(["cc", "-c", tool / "switches.c", "-o", self.folder / "change.o"], check=True)
        subprocess.run(["c++", "-std=c++20", "-w", "-include", tool / "switches.h", self.folder / "switched.cpp",
                        self.folder / "change.o", "-o", self.folder / "switched"], check=True)
        self.assertEqual(self.said(0), "1 + 9 4")
        for number, mutant in numbered.items():
            if (mutant.line, mutant.new.strip()) in expected:
                said = "1 + " + expected.pop((mutant.line, mutant.new.strip()))
                self.assertEqual(self.said(number), said, mutant.after)
        self.assertEqual(expected, {})

    def said(self, number):
        """What the program prints with a change in force."""
        return subprocess.run([self.folder / "switched"], capture_output=True, text=True,
                              env={"VELTA_CHANGE": str(number)}).stdout
