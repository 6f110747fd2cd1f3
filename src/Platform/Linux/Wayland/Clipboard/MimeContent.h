#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

namespace Velloro {

/// What a selection holds, in all the forms in which other programs can ask for it.
struct MimeContent
{
    struct Form
    {
        QByteArray mimeType;
        QByteArray data;

        friend bool operator==(const Form &, const Form &) = default;
    };

    /// A text, in every form of plain text.
    [[nodiscard]] static MimeContent ofText(const QString &text);
    /// A text that stays for a moment only: clipboard histories are asked not to keep it.
    [[nodiscard]] static MimeContent ofPassingText(const QString &text);
    /// Whether the form is plain text.
    [[nodiscard]] static bool isText(const QByteArray &mimeType);

    /// Null where it has no such form.
    [[nodiscard]] const Form *form(const QByteArray &mimeType) const;
    /// The plain text in UTF-8; null where it has none.
    [[nodiscard]] const QByteArray *text() const;

    std::vector<Form> forms;
};

} // namespace Velloro
