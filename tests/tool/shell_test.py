"""What the tool installs for the shell: its bash completion, run by bash on
simulated command lines, and its manual page, made from its help."""
import os
import re
import subprocess
import sys
import unittest

NVK, COMPLETION, MANUAL = sys.argv[1:4]
del sys.argv[1:4]


def complete(*words):
    """The words bash offers for the last of `words` (those after "nvk")."""
    line = " ".join(f"'{w}'" for w in words)
    script = (f'source "{COMPLETION}"; COMP_WORDS=("{NVK}" {line}); '
              f'COMP_CWORD={len(words)}; _nvk; printf "%s\\n" "${{COMPREPLY[@]}}"')
    result = subprocess.run(["bash", "-c", script], capture_output=True, text=True, timeout=60)
    return [w for w in result.stdout.split("\n") if w]


def areas():
    out = subprocess.run([NVK, "--help"], capture_output=True, text=True).stdout
    return re.findall(r"^  (\S+) ", out.split("areas:")[1], re.M)


class Completion(unittest.TestCase):
    def test_it_is_bound_to_nvk(self):
        result = subprocess.run(["bash", "-c", f'source "{COMPLETION}"; complete -p nvk'],
                                capture_output=True, text=True)
        self.assertEqual(result.stdout, "complete -o default -F _nvk nvk\n")

    def test_areas_commands_and_options(self):
        every = complete("")
        self.assertEqual(every[:len(areas())], areas())
        self.assertIn("--raw", every)
        self.assertEqual(complete("i"), ["index", "ini", "iban"])
        self.assertEqual(complete("--raw", "ib"), ["iban"])
        self.assertEqual(complete("iban", ""), ["check", "show", "from-rib", "from-swiss",
                                                "--help"])
        self.assertEqual(complete("barcode", "draw", "x", "--s"), ["--show-text", "--size"])
        # An area that is its one command takes its options at once.
        self.assertIn("--depth", complete("find", "--d"))
        # Elsewhere, file names: bash's own, for an empty answer.
        self.assertEqual(complete("ini", "get", ""), [])
        self.assertEqual(complete("nosuch", ""), [])


class Manual(unittest.TestCase):
    def test_it_holds_every_area_and_command(self):
        with open(MANUAL) as f:
            text = f.read().replace("\\-", "-")
        self.assertTrue(text.startswith('.\\" DO NOT MODIFY'))
        self.assertRegex(text, r'\.TH NVK "1" .* "nvk \d+\.\d+\.\d+"')
        self.assertIn("--raw", text)
        for area in areas():
            self.assertIn(f"nvk {area}", text)
        self.assertIn("usage: nvk iban from-swiss CLEARING COMPTE | -", text)


if __name__ == "__main__":
    unittest.main(verbosity=1)
