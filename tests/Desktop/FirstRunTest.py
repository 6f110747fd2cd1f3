"""The first minutes: an empty home, the welcome window, a model from the repository and a
dictation."""

import http.server
import os
import threading

from desktop_case import PHRASE_WORDS, RECORDING, DesktopCase, main
from velloro_tools.desktop import Velloro, wait_for
from velloro_tools.models import file_name

WELCOME = "Welcome to Velloro"
STEPS = [WELCOME, "Permissions", "Voice Model Ready!", "Set Up Your Hotkey",
         "Handles Complex Phrases", "You're All Set!"]
# What the medium preset stands for on a fresh start.
MODEL = "small-q8_0"
HOTKEY = ["Control_L", "Shift_L", "space"]
LOADED = "[WhisperManager] Loaded model: "


class Repository:
    """A model repository on this machine. Its one model is sent in two halves: the second goes out
    while `open` is set, and the connection breaks instead when `broken` is."""

    def __init__(self, path):
        self.requests = []
        self.open = threading.Event()
        self.broken = False
        content = path.read_bytes()
        repository = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                repository.requests.append(self.path)
                self.send_response(200)
                self.send_header("Content-Length", str(len(content)))
                self.end_headers()
                self.wfile.write(content[:len(content) // 2])
                repository.open.wait(60)
                if not repository.broken:
                    self.wfile.write(content[len(content) // 2:])

            def log_message(self, *_):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.address = f"http://127.0.0.1:{self._server.server_port}/models/"

    def __enter__(self):
        threading.Thread(target=self._server.serve_forever, daemon=True).start()
        return self

    def __exit__(self, *_):
        self.open.set()
        self._server.shutdown()
        self._server.server_close()


class FirstRunTest(DesktopCase):
    def setUp(self):
        super().setUp()
        self.repository = self.enterContext(Repository(self.present[self.model]))
        self.velloro = Velloro(self.desktop, os.environ["VELLORO_FIRST_RUN_PROGRAM"],
                               self.repository.address)

    # --- the welcome window ---------------------------------------------------------------------

    def texts(self):
        return [element["name"] for element in self.user.window_contents()]

    def wait_for_texts(self, *texts):
        """Waits until the active window shows all of these, and returns what it shows."""
        last = []

        def check():
            nonlocal last
            last = self.user.window_contents()
            return last if {element["name"] for element in last}.issuperset(texts) else None
        try:
            return wait_for(check, f"{texts}")
        except Exception:
            print("The active window shows:", *last, sep="\n  ")
            raise

    def focused_name(self):
        # What has the focus comes after what it is in.
        return ([None] + [element["name"] for element in self.user.window_contents()
                          if "focused" in element["states"]])[-1]

    def tab_to(self, name):
        """Whether the Tab key leads to what has that name."""
        for _ in range(12):
            if self.focused_name() == name:
                return True
            self.user.keys("tap", "Tab")
        return False

    def push(self, name, key="Return"):
        """Goes to what has that name with the Tab key, and presses the key there."""
        self.assertTrue(self.tab_to(name), f"{name!r} among {self.texts()}")
        self.user.keys("tap", key)

    def go_to_the_model(self):
        self.wait_for_texts(WELCOME, "Press ⌥Space to dictate anywhere", "Runs on-device",
                            "Lightning fast", "Step 1 of 6")
        self.assertNotIn("Back", self.texts())
        self.push("Continue")
        self.wait_for_texts("Permissions", "Microphone", "Accessibility", "Step 2 of 6")
        self.push("Continue")

    def is_welcoming(self):
        return WELCOME in self.user.window_titles()

    # --- dictations -----------------------------------------------------------------------------

    def toggle(self):
        self.user.keys("tap", *HOTKEY)

    def dictate_toggled(self):
        mark = self.velloro.mark()
        self.toggle()
        self.velloro.wait_for(RECORDING, since=mark)
        self.user.speak(self.phrase())
        self.toggle()
        final = self.finish(mark)
        self.assert_words(final, PHRASE_WORDS)
        return final

    def restart(self):
        self.assertEqual(self.velloro.stop(), 0)
        mark = self.velloro.mark()
        self.velloro.start()
        self.velloro.wait_for(LOADED, since=mark)

    def kept_settings(self):
        # The history grows; which presets have a file is looked for anew.
        passing = ("transcriptionHistory", "downloadedModels")
        return {key: value for key, value in self.velloro.settings().items()
                if key not in passing}

    # --- tests ----------------------------------------------------------------------------------

    def test_from_an_empty_home_to_a_dictation_with_the_keyboard_alone(self):
        self.velloro.start()
        self.go_to_the_model()
        self.wait_for_texts("Setting Up Your Voice Assistant",
                            "Downloading the voice recognition model...", "49%", "Step 3 of 6")
        self.assertFalse(self.tab_to("Continue"), "there is no model yet")
        self.repository.open.set()
        self.velloro.wait_for(LOADED)
        self.wait_for_texts("Voice Model Ready!")
        self.push("Continue")

        # Another mode, another hotkey.
        self.wait_for_texts("Set Up Your Hotkey", "Step 4 of 6")
        self.push("Toggle", "space")
        self.push("Hotkey: ⌥Space")
        self.wait_for_texts("Hotkey: Press your hotkey...")
        self.user.keys("tap", *HOTKEY)
        self.wait_for_texts("Hotkey: ⌃⇧Space")
        self.push("Continue")
        self.wait_for_texts("Handles Complex Phrases", "Step 5 of 6")
        self.push("Continue")
        self.wait_for_texts("You're All Set!", "Press ⌃⇧Space anywhere to start dictating",
                            "Step 6 of 6")
        self.assertFalse(self.velloro.settings().get("hasCompletedOnboarding"))
        self.push("Get Started")
        wait_for(lambda: not self.is_welcoming(), "the welcome window's end")

        self.user.open(["mousepad"])
        self.user.wait_for_focus()
        first = self.dictate_toggled()
        self.user.wait_for_text(first)

        before = self.kept_settings()
        self.restart()
        second = self.dictate_toggled()
        self.user.wait_for_text(first + second)
        self.assertFalse(self.is_welcoming())
        self.assertEqual(self.kept_settings(), before)
        self.assertEqual(self.velloro.history(), [second, first])
        self.assertEqual(self.repository.requests, ["/models/" + file_name(MODEL)])

    def test_a_download_that_breaks_off_says_why_and_is_tried_again(self):
        self.repository.broken = True
        self.velloro.start()
        self.go_to_the_model()
        self.wait_for_texts("Setting Up Your Voice Assistant", "49%")
        self.repository.open.set()
        reason = self.velloro.wait_for("[Onboarding] Download failed: ").partition("failed: ")[2]
        self.wait_for_texts("Download Voice Model", f"The download failed: {reason}")
        self.assertTrue(self.tab_to("Continue"), "one may go on without a model")
        self.assertEqual(list(self.velloro.models_folder.iterdir()), [])

        self.repository.broken = False
        self.push("Download Now")
        self.wait_for_texts("Voice Model Ready!")
        for title in STEPS[3:]:
            self.push("Continue")
            self.wait_for_texts(title)
        self.wait_for_texts("Press and hold ⌥Space anywhere to dictate")
        self.push("Get Started")
        self.velloro.wait_for(LOADED)
        self.user.open(["mousepad"])
        self.user.wait_for_focus()
        final = self.dictate()
        self.assert_words(final, PHRASE_WORDS)
        self.user.wait_for_text(final)
        self.assertTrue(self.velloro.settings()["hasCompletedOnboarding"])

    def test_the_window_closed_during_the_download(self):
        self.velloro.start()
        self.go_to_the_model()
        self.wait_for_texts("49%")
        self.user.keys("tap", "Control_L", "w")
        wait_for(lambda: not self.is_welcoming(), "the welcome window's end")

        # The download goes on, and what comes of it serves.
        self.repository.open.set()
        self.velloro.wait_for(LOADED)
        self.user.open(["mousepad"])
        self.user.wait_for_focus()
        final = self.dictate()
        self.assert_words(final, PHRASE_WORDS)
        self.user.wait_for_text(final)

        self.restart()
        wait_for(self.is_welcoming, "the welcome window")
        self.assertEqual(self.velloro.history(), [final])
        self.go_to_the_model()
        for title in STEPS[2:]:
            self.wait_for_texts(title)
            self.push("Continue" if title != STEPS[-1] else "Get Started")
        wait_for(lambda: not self.is_welcoming(), "the welcome window's end")
        self.assertEqual(len(self.repository.requests), 1)
        self.restart()
        self.assert_words(self.dictate(), PHRASE_WORDS)
        self.assertFalse(self.is_welcoming())

    def test_the_window_that_was_closed_comes_back_with_a_second_start(self):
        self.velloro = Velloro(self.desktop, os.environ["VELLORO_PROGRAM"])
        self.velloro.start()
        for _ in range(2):
            self.wait_for_texts("Step 1 of 6")
            self.user.keys("tap", "Control_L", "w")
            wait_for(lambda: not self.is_welcoming(), "the welcome window's end")
            self.desktop.run([self.velloro.process.args[0]])
        self.wait_for_texts("Step 1 of 6")


if __name__ == "__main__":
    main()
