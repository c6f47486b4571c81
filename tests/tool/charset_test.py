"""The tool's text edges: arguments, standard input and answers go between the
terminal's charset and the library's Windows-1252, in every area."""
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

NVK = sys.argv.pop(1) if len(sys.argv) > 1 else "nvk"
KEY = "0102030405060708"


def run(*args, lang="C.UTF-8", lc_all=None, stdin=b"", cwd=None, env=None):
    """Runs nvk in the locale LANG=`lang` (and LC_ALL=`lc_all`, LC_CTYPE
    unset); str arguments are given in UTF-8, bytes as they are."""
    environment = {k: v for k, v in (env or os.environ).items()
                   if k not in ("LC_ALL", "LC_CTYPE", "LANG")}
    environment["LANG"] = lang
    if lc_all is not None:
        environment["LC_ALL"] = lc_all
    return subprocess.run([NVK, *args], input=stdin, capture_output=True, cwd=cwd,
                          env=environment, timeout=60)


# One step a line, run in order in a scratch folder: the arguments, the exit
# status, and the text that must come back on standard output (or, for a
# failure, in the message on standard error). At least one step an area.
STEPS = [
    (["chaine", "archive", "été"], 0, "03e974e9"),
    (["chaine", "unarchive", "02e9e0"], 0, "éà\n"),
    (["path", "split", "C:\\été\\ça.txt"], 0, "C:\\été\nça.txt\ntxt\n"),
    (["path", "native", "Z:\\tmp\\é"], 0, "/tmp/é\n"),
    (["path", "windows", "/tmp/é"], 0, "Z:\\tmp\\é\n"),
    (["reg", "set", "HKEY_CURRENT_USER\\Software\\Société", "Nom", "Thé"], 0, ""),
    (["reg", "get", "HKEY_CURRENT_USER\\Software\\Société", "Nom"], 0, "Thé\n"),
    (["res", "string", "14014", "--lang", "1036"], 0, "existe déjà"),
    (["locale", "months", "1036"], 0, "février"),
    (["app", "show", "--dico", "App.Name=Société"], 0, "name: Société\n"),
    (["index", "check", "absent-é.idx"], 2, "absent-é.idx"),
    (["data", "dump", "absent-é.dat"], 2, "absent-é.dat"),
    (["ini", "set", "Société/main.dat", "Sé", "Clé", "Crème"], 0, ""),
    (["ini", "get", "Société/main.dat", "Sé", "Clé"], 0, "Crème\n"),
    (["ini", "dump", "Société/main.dat"], 0, "[Sé]\r\nClé=Crème\r\n"),
    (["profile", "get", "Société/main.dat", "Sé", "Clé"], 0, "Crème\n"),
    (["find", "Société", "--include", "*.btr"], 0, "Société/infos.btr\n"),
    (["backup", "Société/infos.btr"], 0, "Société/infos.btr.0.bak\n"),
    (["tree", "delete", "absent-é"], 2, "absent-é"),
    (["trash", "absent-é"], 2, "absent-é"),
    (["paths", "set", "Modèles", "C:\\Modèles", "--app-folder", "."], 0, "C:\\Modèles\n"),
    (["paths", "get", "Modèles", "--app-folder", "."], 0, "C:\\Modèles\n"),
    (["version", "patch", "Société/main.dat"], 1, "none\n"),
    (["key", "show", "é"], 1, "no key\n"),
    (["vars", "run", "Société/main.dat"], 1, ""),
    (["date", "jday", "é", "1", "2"], 2, ": é\n"),
    (["time", "show", "é"], 2, ": é\n"),
    (["zip", "archive-é.zip", "Société/main.dat"], 0, ""),
    (["unzip", "archive-é.zip", "--list"], 0, "  Société/main.dat\n"),
    (["dossier", "zip", "Société/main.dat", "dossier.zip", "--name", "Société", "--app", "COMPTA",
      "--key", KEY], 0, ""),
    (["unzip", "dossier.zip", "--list"], 0, "Dossiers/Société/COMPTA.1/a.dat\n"),
    (["iban", "show", "FR76 é"], 1, "country    FR\n"),
    (["rib", "check", "é", "1", "2", "3"], 1, "invalid\n"),
    (["bic", "check", "DEUTDEFé"], 1, "invalid\n"),
    (["nir", "check", "é"], 1, "invalid\n"),
    (["password", "read",
      "8194be0fd7dd1a6cf0781e088e02c08d6d52e13e2487c1a8b3589ec48e6892c6", "clé"], 0, "é\n"),
    (["barcode", "draw", "é", "--type", "auto", "-o", "absent/é.txt"], 2, "absent/é.txt"),
    (["table", "get", "é\nà", "1"], 0, "à\n"),
    (["link", "create", "Société/main.dat", "lien-é.desktop", "--description", "Café"], 0, ""),
    (["link", "resolve", "lien-é.desktop"], 0, "\\Société\\main.dat\n"),
]


class Utf8Terminal(unittest.TestCase):
    def setUp(self):
        self.scratch = tempfile.mkdtemp()
        self.env = dict(os.environ, HOME=self.scratch,
                        NVK_REGISTRY_DIR=os.path.join(self.scratch, "registry"),
                        XDG_DATA_HOME=os.path.join(self.scratch, "data"),
                        XDG_CONFIG_HOME=os.path.join(self.scratch, "config"))

    def tearDown(self):
        shutil.rmtree(self.scratch)

    def nvk(self, *args, **kw):
        return run(*args, cwd=self.scratch, env=self.env, **kw)

    def make_dossier(self):
        """Société/ with a main file, infos.btr and the data folder COMPTA.1,
        named as the system names files, in UTF-8."""
        folder = os.path.join(self.scratch, "Société")
        os.makedirs(os.path.join(folder, "COMPTA.1"))
        self.main_file = os.path.join(folder, "main.dat")
        for name in ("main.dat", "infos.btr", "COMPTA.1/a.dat"):
            with open(os.path.join(folder, name), "wb") as f:
                f.write(b"x\r\n")

    def test_every_area_gives_its_characters_back(self):
        self.make_dossier()
        for args, status, text in STEPS:
            with self.subTest(" ".join(args)):
                result = self.nvk(*args)
                out = (result.stderr if status == 2 else result.stdout).decode("utf-8")
                self.assertEqual(result.returncode, status, result.stderr)
                self.assertIn(text, out)
                if status == 2:
                    self.assertEqual(len(out.splitlines()), 1, out)
                    self.assertNotIn("Windows-1252", out)
        # Files are bytes, which the library writes in its own code page.
        with open(self.main_file, "rb") as f:
            self.assertIn(b"[S\xe9]\r\nCl\xe9=Cr\xe8me\r\n", f.read())

    def test_dde_carries_text_both_ways(self):
        if shutil.which("dbus-run-session") is None:
            self.skipTest("no dbus-run-session for a private bus")
        script = ('"$0" dde serve Café Thé --reply Clé=Crème >/dev/null & server=$!; i=0; '
                  'until "$0" dde execute Café Thé ping 2>/dev/null; do i=$((i+1)); '
                  '[ $i -lt 50 ] || break; sleep 0.1; done; '
                  '"$0" dde request Café Thé Clé; status=$?; kill $server; exit $status')
        result = subprocess.run(["dbus-run-session", "--", "sh", "-c", script, NVK],
                                capture_output=True, env=dict(os.environ, LANG="C.UTF-8"),
                                timeout=60)
        self.assertEqual((result.returncode, result.stdout), (0, "Crème\n".encode()))

    def test_standard_input_is_converted_line_by_line(self):
        result = self.nvk("chaine", "archive", "-", stdin="é\n日本\nà\n".encode())
        self.assertEqual(result.stdout.decode().splitlines(),
                         ["01e9", "error: the line holds characters that Windows-1252 lacks",
                          "01e0"])
        self.assertEqual(result.returncode, 2)
        answers = self.nvk("index", "create", "i.idx", "512")
        self.assertEqual(answers.returncode, 0)
        answers = self.nvk("index", "run", "i.idx", stdin=b"count 0\n\xff\n")
        self.assertEqual(len(answers.stdout.splitlines()), 2)
        self.assertIn(b"nvk: the line is not text in UTF-8\n", answers.stderr)

    def test_what_windows_1252_cannot_hold_is_refused(self):
        for argument, why in (("日本", "holds characters that Windows-1252 lacks"),
                              (b"\xe9", "is not text in UTF-8"),
                              (b"a\xc3", "is not text in UTF-8")):
            with self.subTest(argument):
                result = self.nvk("chaine", "archive", argument)
                self.assertEqual((result.returncode, result.stdout), (2, b""))
                self.assertEqual(result.stderr.decode(),
                                 f"nvk: argument 3 {why} (see --raw)\n")

    def test_raw_passes_bytes(self):
        self.assertEqual(self.nvk("--raw", "chaine", "archive", b"\xe9").stdout, b"01e9\n")
        self.assertEqual(self.nvk("--raw", "chaine", "archive", "é").stdout, b"02c3a9\n")
        self.assertEqual(self.nvk("--raw", "chaine", "unarchive", "-", stdin=b"01e9\n").stdout,
                         b"\xe9\n")
        # Only before the area: after it, it is a command's option.
        self.assertEqual(self.nvk("chaine", "archive", "x", "--raw").returncode, 2)


class OtherCharsets(unittest.TestCase):
    def test_the_locale_names_the_charset(self):
        cases = [
            # (locale, argument, archive form, text back from 1252 bytes 80 E9)
            ("fr_FR.ISO-8859-15", "€é".encode("iso-8859-15"), "0280e9", "€é"),
            ("fr_FR.ISO-8859-1", "é".encode("latin-1"), "01e9", None),
            ("fr_FR.CP1252", b"\x80\xe9", "0280e9", "€é"),
            ("fr_FR", "€é".encode(), "0280e9", "€é"),  # no charset: UTF-8
            ("C", "€é".encode(), "0280e9", "€é"),
        ]
        for lang, argument, hexa, back in cases:
            with self.subTest(lang):
                codec = "utf-8" if "." not in lang else lang.split(".")[1]
                self.assertEqual(run("chaine", "archive", argument, lang=lang).stdout,
                                 (hexa + "\n").encode())
                if back is not None:
                    self.assertEqual(run("chaine", "unarchive", "0280e9", lang=lang).stdout,
                                     (back + "\n").encode(codec))
        # LC_ALL goes before LANG.
        self.assertEqual(run("chaine", "archive", b"\xa4", lc_all="fr_FR.ISO-8859-15").stdout,
                         b"0180\n")

    def test_a_character_the_terminal_lacks(self):
        # The euro sign is not Latin-1: "?" and a failure, not another character.
        result = run("chaine", "unarchive", "0280e9", lang="fr_FR.ISO-8859-1")
        self.assertEqual(result.stdout, b"?\xe9\n")
        self.assertEqual(result.returncode, 2)
        self.assertIn(b"charset lacks", result.stderr)
        # Of a charset without a Windows number, plain ASCII is taken.
        result = run("chaine", "archive", "é", lang="ja_JP.EUC-JP")
        self.assertEqual(result.returncode, 2)
        self.assertEqual(run("chaine", "archive", "e", lang="ja_JP.EUC-JP").stdout, b"0165\n")


if __name__ == "__main__":
    unittest.main(verbosity=1)
