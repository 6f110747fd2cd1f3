"""What the program answers to its arguments: without a display, without a bus, and without the lock
that a running instance holds."""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest

PROGRAM = os.environ["VELLORO_PROGRAM"]
ROOT = pathlib.Path(__file__).resolve().parents[2]


class CommandLineTest(unittest.TestCase):
    def setUp(self):
        self.home = self.enterContext(tempfile.TemporaryDirectory())

    def ask(self, *arguments):
        """(exit status, standard output, standard error)"""
        answer = subprocess.run(
            [PROGRAM, *arguments], check=False, capture_output=True, text=True, timeout=60,
            env={"PATH": os.environ["PATH"], "HOME": self.home, "XDG_RUNTIME_DIR": self.home})
        return answer.returncode, answer.stdout, answer.stderr

    def test_questions_and_faults(self):
        version = re.search(r"project\(Velloro VERSION ([\d.]+)",
                            (ROOT / "CMakeLists.txt").read_text())[1]
        cases = (
            (["--version"], 0, f"Velloro {re.escape(version)}\n", ""),
            (["-v", "-platform", "offscreen"], 0, f"Velloro {re.escape(version)}\n", ""),
            (["--help"], 0, r"Usage: velloro \[options\]\n(.|\n)*--version (.|\n)*", ""),
            (["-h", "-session", "7"], 0, "Usage: (.|\n)*", ""),
            (["--no-such-option"], 2, "", r"velloro: Unknown option 'no-such-option'\.\n.*\n"),
            (["--version", "-x"], 2, "", r"velloro: Unknown option 'x'\.\n.*\n"),
            (["--press"], 1, "", r"velloro: Velloro is not running in this session\.\n"),
            (["--toggle"], 1, "", r"velloro: .*\n"),
            (["--press", "--release"], 2, "", r"velloro: --press, .* exclude each other\.\n.*\n"),
            (["speech.wav"], 2, "", r"velloro: Unexpected argument 'speech\.wav'\.\n.*\n"),
        )
        for arguments, status, output, error in cases:
            with self.subTest(arguments):
                answer = self.ask(*arguments)
                self.assertEqual(answer[0], status, answer)
                self.assertRegex(answer[1], rf"\A{output}\Z")
                self.assertRegex(answer[2], rf"\A{error}\Z")
        self.assertEqual(os.listdir(self.home), [], "nothing was started")

    def test_the_manual_page_has_each_option(self):
        options = re.findall(r"--?[\w-]+", self.ask("--help")[1])
        self.assertIn("--help", options)
        manual = (ROOT / "packaging/velloro.1").read_text().replace("\\-", "-")
        self.assertEqual([option for option in options if option not in manual], [])


if __name__ == "__main__":
    unittest.main()
