"""The nvk tool as scripts use it: every command's help, usage errors and
standard-input mode, checked against the rules of the README."""
import os
import re
import subprocess
import sys
import tempfile
import unittest

NVK = sys.argv.pop(1) if len(sys.argv) > 1 else "nvk"

# One good input line for each command that reads "-".
GOOD_LINES = {
    ("iban", "check"): "FR76 3000 6000 0112 3456 7890 189",
    ("iban", "show"): "FR7630006000011234567890189",
    ("iban", "from-rib"): "30006 00001 12345678901 89",
    ("iban", "from-swiss"): "762 011623852957",
    ("rib", "key"): "30006 00001 12345678901",
    ("rib", "check"): "30006 00001 12345678901 89",
    ("bic", "check"): "DEUTDEFF",
    ("nir", "check"): "185052A00608448",
    ("nir", "key"): "1850578006084",
    ("chaine", "archive"): "deux mots",
    ("chaine", "unarchive"): "03616263",
    ("password", "scramble"): "Secret Clef",
    ("password", "read"): "00" * 32 + " Clef",
    ("date", "jday"): "3 5 2014",
    ("date", "mdy"): "2456722",
    ("date", "weekday"): "2456722",
    ("date", "print"): "2456722",
    ("date", "raima"): "315550801",
    ("date", "parse"): "05/03/2014",
    ("time", "make"): "2456722 12 0 0",
    ("time", "show"): "3600000000",
    ("path", "split"): "C:\\a b\\c.txt",
    ("path", "normalize"): "C:\\a\\..\\b",
    ("path", "valid-name"): "a:b",
    ("path", "native"): "Z:\\etc",
    ("path", "windows"): "/etc",
    ("key", "show"): "0102030405060708",
}

# Answers that move with the clock: the same input may give another one from
# one second to the next.
TIMED = {("password", "scramble")}


def run(*args, stdin=""):
    return subprocess.run([NVK, *args], input=stdin, capture_output=True, text=True,
                          timeout=60)


def areas():
    out = run("--help").stdout
    return re.findall(r"^  (\S+) ", out.split("areas:")[1], re.M)


def commands(area):
    """(name, usage) of each command of an area, from its help; an area that is
    a command of its own ("nvk find ROOT") has none."""
    out = run(area, "--help").stdout
    if "commands:" not in out:
        return []
    return re.findall(r"^  (\S+) ?(.*)$", out.split("commands:")[1], re.M)


class Contract(unittest.TestCase):
    def assertFailure(self, result, what):
        self.assertEqual(result.returncode, 2, what)
        self.assertEqual(result.stdout, "", what)
        self.assertEqual(len(result.stderr.splitlines()), 1, f"{what}: {result.stderr!r}")
        self.assertTrue(result.stderr.startswith("nvk: "), what)

    def test_the_tool_itself(self):
        self.assertFailure(run(), "nvk")
        self.assertEqual(run("--version").stdout, run("version").stdout)
        self.assertRegex(run("--version").stdout, r"^nvk \d+\.\d+\.\d+\n$")
        self.assertFailure(run("nosuch"), "nvk nosuch")
        demo_help = run("demo", "--help")
        self.assertEqual(demo_help.returncode, 0)
        self.assertNotIn("tour of the library\n\n==", demo_help.stdout)

    def test_every_command_has_help_and_refuses_bad_usage(self):
        for area in areas():
            # "nvk version" alone is the tool's version, and "nvk version X"
            # the version of the file X.
            if area != "version":
                self.assertFailure(run(area), f"nvk {area}")
                self.assertFailure(run(area, "nosuch"), f"nvk {area} nosuch")
            if not commands(area):
                help_ = run(area, "--help")
                self.assertEqual(help_.returncode, 0)
                self.assertTrue(help_.stdout.startswith(f"usage: nvk {area} "), area)
                self.assertFailure(run(area, "x", "--bogus"), f"nvk {area} --bogus")
            for name, usage in commands(area):
                what = f"nvk {area} {name}"
                with self.subTest(what):
                    help_ = run(area, name, "--help")
                    self.assertEqual(help_.returncode, 0)
                    self.assertTrue(help_.stdout.startswith(f"usage: {what} {usage}"))
                    self.assertFailure(run(area, name, "x", "--bogus"), what + " --bogus")
                    if usage and not usage.startswith("["):
                        self.assertFailure(run(area, name), what + " without arguments")

    def test_standard_input_gives_one_answer_line_for_each_line(self):
        for area in areas():
            for name, usage in commands(area):
                if "| -" not in usage:
                    continue
                what = f"nvk {area} {name} -"
                with self.subTest(what):
                    self.assertIn((area, name), GOOD_LINES, f"{what} has no good input here")
                    good = GOOD_LINES[(area, name)]
                    lines = [good, "", good, "?? not an input ??", good]
                    text = "\n".join(lines[:2]) + "\n" + lines[2] + "\r\n" + \
                        "\n".join(lines[3:]) + "\n"
                    result = run(area, name, "-", stdin=text)
                    answers = result.stdout.split("\n")[:-1]
                    self.assertEqual(len(answers), len(lines), f"{what}: {result.stdout!r}")
                    self.assertFalse(answers[0].startswith("error:"), answers[0])
                    if (area, name) in TIMED:
                        self.assertEqual(len(answers[0]), len(answers[2]))
                        continue
                    self.assertEqual(answers[0], answers[2])
                    self.assertEqual(answers[0], answers[4])
                    # An answer of one line is the same as for the arguments.
                    alone = run(area, name, *([good] if area in ("chaine", "path") else
                                              good.split())).stdout.splitlines()
                    if len(alone) == 1:
                        self.assertEqual(alone[0], answers[0])

    def test_negative_answers_and_refused_input(self):
        self.assertEqual(run("iban", "show", "FR00 1234").returncode, 1)
        invalid = run("iban", "from-rib", "30006", "00001", "12345678901", "00")
        self.assertEqual((invalid.returncode, invalid.stdout), (1, "invalid\n"))
        self.assertFailure(run("password", "scramble", "x" * 32, "k"), "password of 32")
        self.assertEqual(run("password", "scramble", "x" * 31, "k").returncode, 0)
        self.assertFailure(run("time", "make", "2415385", "0", "0", "0"), "31/12/1900")
        self.assertFailure(run("time", "make", "2466556", "0", "0", "0"), "2038")
        with open("/dev/full", "w") as full:
            failed = subprocess.run([NVK, "iban", "check", "FR7630006000011234567890189"],
                                    stdout=full, stderr=subprocess.PIPE, text=True)
        self.assertEqual(failed.returncode, 2)
        self.assertEqual(len(failed.stderr.splitlines()), 1)
        unknown = run("locale", "item", "1036", "9999")
        self.assertEqual(unknown.returncode, 1)
        self.assertEqual(len(unknown.stderr.splitlines()), 1)


if __name__ == "__main__":
    unittest.main(verbosity=1)
