"""nvk find, backup, tree and trash on a scratch tree: what scripts read from
them, in the forms they gave their paths."""
import os
import subprocess
import sys
import tempfile
import unittest

NVK = sys.argv.pop(1) if len(sys.argv) > 1 else "nvk"


def run(*args, env=None):
    return subprocess.run([NVK, *args], capture_output=True, text=True, timeout=60,
                          env={**os.environ, **(env or {})})


def make(root, *names):
    for name in names:
        path = os.path.join(root, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w") as out:
            out.write(name)


class Files(unittest.TestCase):
    def setUp(self):
        self.scratch = tempfile.TemporaryDirectory()
        self.root = os.path.join(self.scratch.name, "t")
        make(self.root, "b.txt", "A.log", "sub/c.txt", "sub/deep/d.txt", "Temp/t.txt")

    def tearDown(self):
        self.scratch.cleanup()

    def test_find_prints_the_walk_in_the_form_of_its_root(self):
        found = run("find", self.root, "--folders")
        self.assertEqual(found.returncode, 0)
        rel = [line[len(self.root) + 1:] for line in found.stdout.splitlines()]
        self.assertEqual(rel, ["A.log", "b.txt", "sub", "Temp", "sub/c.txt", "sub/deep",
                               "sub/deep/d.txt", "Temp/t.txt"])
        windows = "Z:" + self.root.replace("/", "\\")
        found = run("find", windows, "--include", "*.txt", "--path-exclude", "*\\temp",
                    "--null")
        self.assertEqual(found.stdout.split("\0")[:-1],
                         [windows + "\\b.txt", windows + "\\sub\\c.txt",
                          windows + "\\sub\\deep\\d.txt"])
        self.assertEqual(run("find", self.root, "--include", "*.none").returncode, 1)
        self.assertEqual(len(run("find", self.root, "--depth", "0").stdout.splitlines()), 2)

    def test_backup_tree_and_trash(self):
        file = os.path.join(self.root, "b.txt")
        made = [run("backup", file, "--count", "2").stdout.strip() for _ in range(3)]
        self.assertEqual(made, [file + ".0.bak", file + ".1.bak", file + ".1.bak"])
        copy = os.path.join(self.scratch.name, "copy")
        self.assertEqual(run("tree", "copy", self.root, copy).returncode, 0)
        size = sum(len(n) for n in ["b.txt", "A.log", "sub/c.txt", "sub/deep/d.txt",
                                    "Temp/t.txt", "b.txt", "b.txt"])
        self.assertEqual(run("tree", "size", copy).stdout, f"{size}\n")
        self.assertEqual(run("tree", "delete", copy, "--keep-root").returncode, 0)
        self.assertEqual(run("tree", "empty", copy).stdout, "empty\n")
        self.assertEqual(run("tree", "delete", copy).returncode, 0)
        self.assertFalse(os.path.exists(copy))
        self.assertEqual(run("tree", "copy", self.root, self.root).returncode, 2)

        data = os.path.join(self.scratch.name, "data")
        self.assertEqual(run("trash", file, env={"XDG_DATA_HOME": data}).returncode, 0)
        self.assertTrue(os.path.exists(os.path.join(data, "Trash/files/b.txt")))
        with open(os.path.join(data, "Trash/info/b.txt.trashinfo")) as info:
            self.assertIn(f"Path={file}\n", info.read())
        self.assertEqual(run("trash", file, env={"XDG_DATA_HOME": data}).returncode, 2)


if __name__ == "__main__":
    unittest.main(verbosity=1)
