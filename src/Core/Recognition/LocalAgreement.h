#pragma once

#include <QStringList>

namespace Velloro {

/// What of a speech no later recognition will change, from what each pass over it heard: a word is
/// confirmed when two passes in a row agree on it and on every word before it.
///
/// Words are compared by their position in a pass, without regard to upper and lower case.
class LocalAgreement
{
public:
    /// The words of a recognised text: what stands between spaces, of whatever width, and tabs.
    [[nodiscard]] static QStringList words(const QString &text);

    /// Takes the words of the next pass; those that are confirmed by it keep its form.
    void addPass(const QStringList &heard);

    /// Only ever grows.
    [[nodiscard]] const QStringList &confirmedWords() const { return m_confirmedWords; }
    /// The words of the latest pass beyond the number of the confirmed ones.
    [[nodiscard]] QStringList uncommittedWords() const;

private:
    QStringList m_previousWords;
    QStringList m_confirmedWords;
};

} // namespace Velloro
