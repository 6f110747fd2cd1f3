#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <cstdint>

namespace Velloro {

/// The key bindings of the user's sway configuration, as far as they hold in its default mode.
///
/// Sway accepts a binding for a combination that has one already, and tells of none; so what is
/// bound has to be read where the user has written it.
class SwayConfig
{
public:
    struct Binding
    {
        /// Bits of `ClassicMask`, and `otherModifier` for any other.
        uint32_t modifiers = 0;
        /// A keysym's name, or the number of an X keycode.
        QString key;
        bool isKeycode = false;

        friend bool operator==(const Binding &, const Binding &) = default;
    };
    static constexpr uint32_t otherModifier = 1;

    /// Reads the text of the main file and what it includes. Relative names of included files
    /// start from `folder`.
    SwayConfig(const QString &text, const QString &folder);

    [[nodiscard]] const QList<Binding> &bindings() const { return m_bindings; }

private:
    void readText(const QString &text);
    void readLine(const QString &line);
    void readCommand(QStringList words);
    void readBinding(const QStringList &words);
    void include(const QString &pattern);

    QString m_folder;
    QHash<QString, QString> m_variables;
    /// What precedes the lines of each open block; a command that is not of interest for most.
    QList<QStringList> m_blocks;
    QStringList m_included;
    QList<Binding> m_bindings;
};

} // namespace Velloro
