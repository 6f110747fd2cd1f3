"""A window that prints what reaches it, each as a line of JSON: "focus", "blur", "click" with its
place in the window, "key" with its text, "space" for that key. At the key F9 it copies one thing in
three forms, and prints "copied"."""

import json

from PyQt6.QtCore import QBuffer, QByteArray, QIODevice, QMimeData, Qt
from PyQt6.QtGui import QGuiApplication, QImage, QPainter, QRasterWindow

TEXT = "Żółw 👍🏽 and a picture"
HTML = "<p>Żółw 👍🏽 and <b>a picture</b></p>"


def picture():
    """A picture of some size, as a file's bytes."""
    image = QImage(300, 200, QImage.Format.Format_RGB32)
    for x in range(image.width()):
        for y in range(image.height()):
            image.setPixel(x, y, (x * x * 7919 ^ y * y * 104729) & 0xffffff)
    content = QByteArray()
    buffer = QBuffer(content)
    buffer.open(QIODevice.OpenModeFlag.WriteOnly)
    image.save(buffer, "PNG")
    return content


def tell(kind, **more):
    print(json.dumps({"kind": kind, **more}), flush=True)


class Window(QRasterWindow):
    def paintEvent(self, _event):
        QPainter(self).fillRect(0, 0, self.width(), self.height(), Qt.GlobalColor.darkCyan)

    def focusInEvent(self, _event):
        tell("focus")

    def focusOutEvent(self, _event):
        tell("blur")

    def mousePressEvent(self, event):
        tell("click", x=round(event.position().x()), y=round(event.position().y()))

    def keyPressEvent(self, event):
        kind = "space" if event.key() == Qt.Key.Key_Space else "key"
        tell(kind, text=event.text())
        if event.key() == Qt.Key.Key_F9:
            content = QMimeData()
            content.setText(TEXT)
            content.setHtml(HTML)
            content.setData("image/png", picture())
            QGuiApplication.clipboard().setMimeData(content)
            tell("copied")


def main():
    application = QGuiApplication([])
    window = Window()
    window.setTitle("Listening")
    window.resize(640, 400)
    window.show()
    application.exec()


if __name__ == "__main__":
    main()
