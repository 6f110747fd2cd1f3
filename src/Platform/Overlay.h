#pragma once

#include <QObject>
#include <QSize>

class QImage;

namespace Velloro {

/// A picture above all windows that takes neither the keyboard nor clicks: at the bottom of the
/// screen that the user works on, in the middle, clear of the desktop's panels. Where the desktop
/// has such a thing its place is the desktop's choice. Main thread only; nothing here waits.
class Overlay : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Asks for a place of this size, so far above the lower edge, both in logical pixels. Nothing
    /// is seen before the first picture.
    virtual void show(QSize size, int bottomMargin) = 0;
    /// Takes it off the screen; nothing is reported until it is shown again.
    virtual void hide() = 0;

    /// The screen's pixels in a logical one, as far as that is known. The picture is that much
    /// larger than the place.
    [[nodiscard]] virtual double pixelRatio() const = 0;

    /// Shows a picture with premultiplied transparency. Only in answer to `placed` or `frameShown`,
    /// once each; at other times it may be dropped.
    virtual void present(const QImage &picture) = 0;

Q_SIGNALS:
    /// There is a place now, and it is empty: after `show`, and again when the screen has gone and
    /// another one is used.
    void placed();
    /// The last picture is on the screen, which can take another one.
    void frameShown();
    /// Pictures of the former size are still shown, but not sharp.
    void pixelRatioChanged();
};

} // namespace Velloro
