#include "Platform/Linux/Wayland/Clipboard/MimeContent.h"

#include <algorithm>

namespace Velloro {

namespace {

// The best first. Those without a slash are what X11 calls them; XWayland and older toolkits ask
// for these.
constexpr const char *textForms[]
    = {"text/plain;charset=utf-8", "UTF8_STRING", "text/plain", "TEXT", "STRING"};
constexpr auto unicodeForms = 2;

} // namespace

MimeContent MimeContent::ofText(const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    MimeContent content;
    for (const char *mimeType : textForms)
        content.forms.push_back({mimeType, utf8});
    return content;
}

MimeContent MimeContent::ofPassingText(const QString &text)
{
    MimeContent content = ofText(text);
    // The sign by which password managers keep their texts out of clipboard histories. It is one
    // more form: who does not know it does not ask for it.
    content.forms.push_back({"x-kde-passwordManagerHint", "secret"});
    return content;
}

bool MimeContent::isText(const QByteArray &mimeType)
{
    return std::ranges::any_of(textForms, [&](const char *each) { return mimeType == each; });
}

const MimeContent::Form *MimeContent::form(const QByteArray &mimeType) const
{
    const auto found = std::ranges::find(forms, mimeType, &Form::mimeType);
    return found == forms.end() ? nullptr : &*found;
}

const QByteArray *MimeContent::text() const
{
    for (int each = 0; each < unicodeForms; ++each) {
        if (const Form *found = form(textForms[each]))
            return &found->data;
    }
    return nullptr;
}

} // namespace Velloro
