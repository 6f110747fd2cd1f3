#pragma once

#include "Platform/Platform.h"

#include <QObject>
#include <QString>
#include <QStringList>

namespace Velloro {

/// Puts text into whatever text field has the keyboard focus, as if the user had typed it: through
/// the accessibility interface or, failing that, through the pasteboard and a paste stroke. Main
/// thread only. Writes no log lines.
class TextInsertionManager : public QObject
{
    Q_OBJECT

public:
    explicit TextInsertionManager(Platform &platform, QObject *parent = nullptr);
    /// Gives the pasteboard back what the user had on it, where that is still to be done.
    ~TextInsertionManager() override;

    /// Whether this process may use the accessibility interface.
    [[nodiscard]] bool hasAccessibilityPermission() const;
    /// Inserts the text over the selection or at the caret. False only for an empty text; whether
    /// an application really pasted can't be known.
    bool insertText(const QString &text);
    /// Sends that many backspace strokes, 5 ms apart, blocking meanwhile; nothing for a count
    /// below 1.
    ///
    /// One stroke stands for one user-perceived character, and applications differ in what it
    /// takes: GTK 3 fields take accents, emoji sequences and flags whole, but only the last code
    /// point of Devanagari, Thai, pointed Hebrew, vowelled Arabic and decomposed Hangul; a
    /// terminal's line takes one code point always. There, as many code points go as characters
    /// were counted, so that nothing that stood before is ever removed.
    void deleteBackwards(int64_t count);

private:
    bool insertViaAccessibility(const QString &text);
    bool insertViaClipboard(const QString &text);
    void restorePasteboard();
    void simulatePaste();

    Platform &m_platform;
    QString m_lastInsertedText;
    AccessibilityElementRef m_lastInsertionTarget;
    /// Texts that are to go back on the pasteboard, the first one first.
    QStringList m_displacedTexts;
};

} // namespace Velloro
