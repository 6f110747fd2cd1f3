#pragma once

#include "Views/ViewEngine.h"

#include <QQuickView>

namespace Velloro {

/// A borderless window with round corners around one QML view, as large as the view. Where the
/// desktop does not blend windows the corners are cut off by a mask. Main thread only.
class FramelessView : public QQuickView
{
    Q_OBJECT

public:
    /// `engine` outlives the window.
    FramelessView(ViewEngine &engine, Qt::WindowFlags flags, qreal cornerRadius);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void updateMask();

    Appearance &m_appearance;
    qreal m_cornerRadius;
};

} // namespace Velloro
