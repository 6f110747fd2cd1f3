"""An application that is dictated into, as data."""

import dataclasses
import re


@dataclasses.dataclass(frozen=True)
class Application:
    """`command` may have the placeholders of its field, as may the values of `environment` and
    of `files`, which are laid into the home before the application starts (path: contents).
    """

    name: str
    toolkit: str
    # The first is the one whose version is told.
    packages: list
    command: list
    field: type
    # The kind of field of a page.
    page: str = "textarea"
    # A part of the window's title.
    title: str = ""
    # Chords that put the caret behind the text, and those that save it.
    before: tuple = (("Control_L", "End"),)
    save: tuple = (("Control_L", "s"),)
    environment: dict = dataclasses.field(default_factory=dict)
    files: dict = dataclasses.field(default_factory=dict)
    # Seconds: until the window is there, and how long it must look the same to be ready.
    start_limit: float = 60
    settled: float = 1.0
    # What is known of it, and no dictation can change.
    remark: str = ""

    @property
    def package(self):
        return self.packages[0]

    @property
    def slug(self):
        """The name, for names of files."""
        return re.sub(r"[^a-z0-9+]+", "-", self.name.lower())

    def filled(self, placeholders):
        """(command, environment, files) with the placeholders' values."""
        def fill(text):
            for name, value in placeholders.items():
                text = text.replace("{" + name + "}", value)
            return text
        return ([fill(word) for word in self.command],
                {name: fill(value) for name, value in self.environment.items()},
                {path: fill(text) for path, text in self.files.items()})
