#include "Platform/Linux/PasteStroke.h"

#include <optional>

namespace Velloro {

namespace {

struct KnownClass
{
    QStringView name;
    PasteStroke stroke;
};

// Instance names, class names or ids of applications, in lower case.
constexpr KnownClass knownClasses[] = {
    {u"xterm", PasteStroke::shiftInsert},
    {u"uxterm", PasteStroke::shiftInsert},
    {u"lxterm", PasteStroke::shiftInsert},
    {u"koi8rxterm", PasteStroke::shiftInsert},
    {u"kterm", PasteStroke::shiftInsert},
    {u"rxvt", PasteStroke::shiftInsert},
    {u"urxvt", PasteStroke::shiftInsert},
    {u"urxvtc", PasteStroke::shiftInsert},
    {u"aterm", PasteStroke::shiftInsert},
    {u"eterm", PasteStroke::shiftInsert},
    {u"mlterm", PasteStroke::shiftInsert},
    {u"st", PasteStroke::shiftInsert},
    {u"st-256color", PasteStroke::shiftInsert},
    {u"stterm", PasteStroke::shiftInsert},
    {u"pterm", PasteStroke::shiftInsert},
    {u"putty", PasteStroke::shiftInsert},
    {u"zutty", PasteStroke::shiftInsert},
    {u"termit", PasteStroke::shiftInsert},
    // Control+V means something else in these editors.
    {u"emacs", PasteStroke::shiftInsert},
    {u"gvim", PasteStroke::shiftInsert},

    {u"gnome-terminal", PasteStroke::controlShiftV},
    {u"gnome-terminal-server", PasteStroke::controlShiftV},
    {u"org.gnome.terminal", PasteStroke::controlShiftV},
    {u"kgx", PasteStroke::controlShiftV},
    {u"org.gnome.console", PasteStroke::controlShiftV},
    {u"ptyxis", PasteStroke::controlShiftV},
    {u"org.gnome.ptyxis", PasteStroke::controlShiftV},
    {u"app.devsuite.ptyxis", PasteStroke::controlShiftV},
    {u"konsole", PasteStroke::controlShiftV},
    {u"org.kde.konsole", PasteStroke::controlShiftV},
    {u"yakuake", PasteStroke::controlShiftV},
    {u"org.kde.yakuake", PasteStroke::controlShiftV},
    {u"xfce4-terminal", PasteStroke::controlShiftV},
    {u"org.xfce.terminal", PasteStroke::controlShiftV},
    {u"mate-terminal", PasteStroke::controlShiftV},
    {u"lxterminal", PasteStroke::controlShiftV},
    {u"qterminal", PasteStroke::controlShiftV},
    {u"io.elementary.terminal", PasteStroke::controlShiftV},
    {u"deepin-terminal", PasteStroke::controlShiftV},
    {u"org.deepin.terminal", PasteStroke::controlShiftV},
    {u"terminator", PasteStroke::controlShiftV},
    {u"tilix", PasteStroke::controlShiftV},
    {u"com.gexperts.tilix", PasteStroke::controlShiftV},
    {u"guake", PasteStroke::controlShiftV},
    {u"tilda", PasteStroke::controlShiftV},
    {u"sakura", PasteStroke::controlShiftV},
    {u"roxterm", PasteStroke::controlShiftV},
    {u"terminology", PasteStroke::controlShiftV},
    {u"cool-retro-term", PasteStroke::controlShiftV},
    {u"kitty", PasteStroke::controlShiftV},
    {u"alacritty", PasteStroke::controlShiftV},
    {u"foot", PasteStroke::controlShiftV},
    {u"footclient", PasteStroke::controlShiftV},
    {u"contour", PasteStroke::controlShiftV},
    {u"org.contourterminal.contour", PasteStroke::controlShiftV},
    {u"wezterm", PasteStroke::controlShiftV},
    {u"org.wezfurlong.wezterm", PasteStroke::controlShiftV},
    {u"com.mitchellh.ghostty", PasteStroke::controlShiftV},
    {u"ghostty", PasteStroke::controlShiftV},
    {u"rio", PasteStroke::controlShiftV},
    {u"com.system76.cosmicterm", PasteStroke::controlShiftV},
    {u"blackbox", PasteStroke::controlShiftV},
    {u"com.raggesilver.blackbox", PasteStroke::controlShiftV},
    {u"pangoterm", PasteStroke::controlShiftV},
};

std::optional<PasteStroke> strokeOf(const QString &name)
{
    for (const KnownClass &known : knownClasses) {
        if (name.compare(known.name, Qt::CaseInsensitive) == 0)
            return known.stroke;
    }
    return std::nullopt;
}

} // namespace

PasteStroke pasteStroke(const WindowClass &windowClass, bool focusedElementIsTerminal)
{
    // A user may have given the instance a name of his own, so the class goes first.
    if (const auto stroke = strokeOf(windowClass.name))
        return *stroke;
    if (const auto stroke = strokeOf(windowClass.instance))
        return *stroke;
    return focusedElementIsTerminal ? PasteStroke::controlShiftV : PasteStroke::controlV;
}

bool isKnownToPaste(const WindowClass &windowClass)
{
    return strokeOf(windowClass.name) || strokeOf(windowClass.instance);
}

} // namespace Velloro
