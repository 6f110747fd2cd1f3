#pragma once

#include "Platform/Appearance.h"

#include <QColor>
#include <QFont>
#include <QObject>
#include <QtQml/qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

namespace Velloro {

/// The colours, fonts and measures of every view; it follows the desktop live.
///
/// A singleton in QML; the engine carries the instance that `install` gave it.
class Theme : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool isDark READ isDark NOTIFY changed)
    /// Whether windows may be translucent.
    Q_PROPERTY(bool isTranslucent READ isTranslucent NOTIFY changed)
    /// The factor by which text is larger than designed.
    Q_PROPERTY(qreal textScale READ textScale NOTIFY changed)

    /// The ground of what is chosen or pressed first: the desktop's, as far from the ground of a
    /// group as shapes must be.
    /// The factor by which windows are larger than designed, where the screen has room: text that
    /// is smaller leaves them as they are.
    Q_PROPERTY(qreal growth READ growth NOTIFY changed)

    Q_PROPERTY(QColor accent READ accent NOTIFY changed)
    /// What is written on the accent colour, and what is written in it.
    Q_PROPERTY(QColor onAccent READ onAccent NOTIFY changed)
    Q_PROPERTY(QColor accentText READ accentText NOTIFY changed)
    /// Text, dimmed text, hints, and the faintest fill.
    Q_PROPERTY(QColor primary READ primary NOTIFY changed)
    Q_PROPERTY(QColor secondary READ secondary NOTIFY changed)
    Q_PROPERTY(QColor tertiary READ tertiary NOTIFY changed)
    Q_PROPERTY(QColor quaternary READ quaternary NOTIFY changed)
    Q_PROPERTY(QColor separator READ separator NOTIFY changed)
    Q_PROPERTY(QColor red READ red NOTIFY changed)
    Q_PROPERTY(QColor orange READ orange NOTIFY changed)
    Q_PROPERTY(QColor yellow READ yellow NOTIFY changed)
    Q_PROPERTY(QColor green READ green NOTIFY changed)
    Q_PROPERTY(QColor blue READ blue NOTIFY changed)
    Q_PROPERTY(QColor purple READ purple NOTIFY changed)
    Q_PROPERTY(QColor pink READ pink NOTIFY changed)
    Q_PROPERTY(QColor gray READ gray NOTIFY changed)

    /// Behind a window's content.
    Q_PROPERTY(QColor window READ window NOTIFY changed)
    /// Behind floating content: translucent where the desktop blends windows.
    Q_PROPERTY(QColor material READ material NOTIFY changed)
    /// Behind a group of a form, and behind a control that can be pressed or typed into.
    Q_PROPERTY(QColor group READ group NOTIFY changed)
    Q_PROPERTY(QColor control READ control NOTIFY changed)
    Q_PROPERTY(QColor controlBorder READ controlBorder NOTIFY changed)

    Q_PROPERTY(QFont largeTitle READ largeTitle NOTIFY changed)
    Q_PROPERTY(QFont title READ title NOTIFY changed)
    Q_PROPERTY(QFont title2 READ title2 NOTIFY changed)
    Q_PROPERTY(QFont title3 READ title3 NOTIFY changed)
    Q_PROPERTY(QFont headline READ headline NOTIFY changed)
    Q_PROPERTY(QFont body READ body NOTIFY changed)
    Q_PROPERTY(QFont bodyMedium READ bodyMedium NOTIFY changed)
    Q_PROPERTY(QFont subheadline READ subheadline NOTIFY changed)
    Q_PROPERTY(QFont caption READ caption NOTIFY changed)
    Q_PROPERTY(QFont caption2 READ caption2 NOTIFY changed)
    Q_PROPERTY(QString monospacedFamily READ monospacedFamily NOTIFY changed)

    /// The default padding.
    Q_PROPERTY(qreal padding READ padding CONSTANT)

public:
    /// `appearance` outlives the theme.
    explicit Theme(Appearance &appearance, QObject *parent = nullptr);

    /// Makes this theme the singleton of an engine, which it outlives.
    void install(QQmlEngine &engine);
    static Theme *create(QQmlEngine *engine, QJSEngine *);

    [[nodiscard]] bool isDark() const;
    [[nodiscard]] bool isTranslucent() const;
    [[nodiscard]] qreal textScale() const;

    [[nodiscard]] qreal growth() const { return qMax(1.0, textScale()); }

    [[nodiscard]] QColor accent() const;
    [[nodiscard]] QColor onAccent() const;
    [[nodiscard]] QColor accentText() const;
    [[nodiscard]] QColor primary() const;
    [[nodiscard]] QColor secondary() const;
    [[nodiscard]] QColor tertiary() const;
    [[nodiscard]] QColor quaternary() const;
    [[nodiscard]] QColor separator() const;
    [[nodiscard]] QColor red() const;
    [[nodiscard]] QColor orange() const;
    [[nodiscard]] QColor yellow() const;
    [[nodiscard]] QColor green() const;
    [[nodiscard]] QColor blue() const;
    [[nodiscard]] QColor purple() const;
    [[nodiscard]] QColor pink() const;
    [[nodiscard]] QColor gray() const;
    [[nodiscard]] QColor window() const;
    [[nodiscard]] QColor material() const;
    [[nodiscard]] QColor group() const;
    [[nodiscard]] QColor control() const;
    [[nodiscard]] QColor controlBorder() const;

    [[nodiscard]] QFont largeTitle() const { return font(26, QFont::Normal); }
    [[nodiscard]] QFont title() const { return font(22, QFont::Normal); }
    [[nodiscard]] QFont title2() const { return font(17, QFont::Normal); }
    [[nodiscard]] QFont title3() const { return font(15, QFont::Normal); }
    [[nodiscard]] QFont headline() const { return font(13, QFont::DemiBold); }
    [[nodiscard]] QFont body() const { return font(13, QFont::Normal); }
    [[nodiscard]] QFont bodyMedium() const { return font(13, QFont::Medium); }
    [[nodiscard]] QFont subheadline() const { return font(12, QFont::Normal); }
    [[nodiscard]] QFont caption() const { return font(11, QFont::Normal); }
    [[nodiscard]] QFont caption2() const { return font(10, QFont::Normal); }
    [[nodiscard]] QString monospacedFamily() const;

    [[nodiscard]] qreal padding() const { return 16; }

    /// White or black, whichever is read better on this ground.
    Q_INVOKABLE static QColor inkOn(const QColor &ground);
    /// The colour, as much deeper or lighter as it takes to be read on every ground of the theme on
    /// which `veil` lies.
    Q_INVOKABLE QColor legible(const QColor &color, const QColor &veil = Qt::transparent) const;
    /// The colour at this opacity.
    Q_INVOKABLE static QColor faded(const QColor &color, qreal opacity);
    /// The font in this weight, one of QML's `Font` weights.
    Q_INVOKABLE static QFont weighted(const QFont &font, int weight);

Q_SIGNALS:
    void changed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    [[nodiscard]] QFont font(qreal pixels, QFont::Weight weight) const;
    [[nodiscard]] QColor choose(QRgb light, QRgb dark) const;

    Appearance &m_appearance;
};

} // namespace Velloro
