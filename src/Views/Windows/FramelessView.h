#pragma once

#include "Views/Windows/ViewEngine.h"

#include <QQuickView>

namespace Velloro {

/// A borderless window with round corners around one QML view, as large as the view. Where the
/// desktop does not blend windows the corners are cut off by a mask, and what they leave of a pixel
/// is of the ground's colour. Main thread only.
class FramelessView : public QQuickView
{
    Q_OBJECT

public:
    /// `engine` outlives the window.
    FramelessView(ViewEngine &engine, Qt::WindowFlags flags, qreal cornerRadius);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void updateGround();
    void updateMask();

    Theme &m_theme;
    qreal m_cornerRadius;
};

} // namespace Velloro
