#include "Platform/Linux/Desktop/DesktopAppearance.h"

#include "Base/StringLiterals.h"
#include "Platform/Linux/Desktop/DBusCall.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QEvent>
#include <QGuiApplication>
#include <QHash>
#include <QPalette>
#include <QStandardPaths>
#include <cmath>

namespace Velloro {

namespace {

const QString portal = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString portalSettings = u"org.freedesktop.portal.Settings"_s;
const QString appearanceGroup = u"org.freedesktop.appearance"_s;
const QString interfaceGroup = u"org.gnome.desktop.interface"_s;

using SettingGroups = QMap<QString, QVariantMap>;

/// The named accent colours of the settings store.
std::optional<uint32_t> namedAccent(const QString &name)
{
    static const QHash<QString, uint32_t> colors{
        {u"blue"_s, 0x3584e4},   {u"teal"_s, 0x2190a4},   {u"green"_s, 0x3a944a},
        {u"yellow"_s, 0xc88800}, {u"orange"_s, 0xed5b00}, {u"red"_s, 0xe62d42},
        {u"pink"_s, 0xd56199},   {u"purple"_s, 0x9141ac}, {u"slate"_s, 0x6f8396}};
    const auto color = colors.constFind(name);
    return color == colors.constEnd() ? std::nullopt : std::optional<uint32_t>(*color);
}

/// Three components of 0 to 1; anything else means that there is no accent colour.
std::optional<uint32_t> portalAccent(const QVariant &value)
{
    if (!value.canConvert<QDBusArgument>())
        return std::nullopt;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != u"(ddd)"_s)
        return std::nullopt;
    double red = -1;
    double green = -1;
    double blue = -1;
    argument.beginStructure();
    argument >> red >> green >> blue;
    argument.endStructure();
    uint32_t color = 0;
    for (const double component : {red, green, blue}) {
        if (!(component >= 0 && component <= 1))
            return std::nullopt;
        color = color << 8 | uint32_t(std::lround(component * 255));
    }
    return color;
}

template <typename T>
bool assign(T &target, const T &value)
{
    if (target == value)
        return false;
    target = value;
    return true;
}

} // namespace

DesktopAppearance::DesktopAppearance(std::shared_ptr<DesktopLook> look)
    : m_look(std::move(look))
{
    connect(m_look.get(), &DesktopLook::changed, this, &Appearance::changed);
    qGuiApp->installEventFilter(this);
    askPortal();
    askForShell();
}

DesktopAppearance::~DesktopAppearance()
{
    for (const auto *process : {&m_settingsReader, &m_settingsMonitor}) {
        if (!*process)
            continue;
        (*process)->disconnect(this);
        (*process)->kill();
        (*process)->waitForFinished(200);
    }
}

bool DesktopAppearance::prefersDark() const
{
    return m_dark.value_or(QGuiApplication::palette().color(QPalette::Window).lightness() < 128);
}

double DesktopAppearance::textScale() const
{
    if (!m_look->scalesWindowsWithText())
        return m_textScale;
    return remainingTextScale(m_textScale, qGuiApp->devicePixelRatio());
}

bool DesktopAppearance::isTrayDark() const
{
    if (const std::optional<bool> dark = m_look->isTrayDark())
        return *dark;
    return m_hasDarkShell || prefersDark();
}

double DesktopAppearance::remainingTextScale(double textScale, double pixelRatio)
{
    // Text of 1.25 on windows of 2 is handed on as one resolution of 2.5 times the usual.
    const double windows = pixelRatio / textScale;
    const bool isPartOfRatio = windows > 0.99 && std::abs(windows - std::round(windows)) < 0.01;
    return isPartOfRatio ? 1 : textScale;
}

bool DesktopAppearance::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ApplicationPaletteChange && watched == qGuiApp)
        Q_EMIT changed();
    return Appearance::eventFilter(watched, event);
}

void DesktopAppearance::askPortal()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    // From whichever sender: who owns the portal's name need not be known, now or when it restarts.
    bus.connect(QString(), portalPath, portalSettings, u"SettingChanged"_s, this,
                SLOT(settingChanged(QDBusMessage)));
    const QDBusMessage question = DBusCall::make(portal, portalPath, portalSettings, u"ReadAll"_s,
                                                 {QStringList{appearanceGroup, interfaceGroup}});
    DBusCall::whenAnswered(bus.asyncCall(question), this, [this](const QDBusMessage &reply) {
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
            readSettingsStore();
            return;
        }
        const auto groups = qdbus_cast<SettingGroups>(reply.arguments().constFirst());
        bool isChanged = false;
        // The portal's own colours come last: they are exact.
        for (const QString &group : {interfaceGroup, appearanceGroup}) {
            const QVariantMap settings = groups.value(group);
            for (auto setting = settings.begin(); setting != settings.end(); ++setting)
                isChanged |= apply(group, setting.key(), setting.value());
        }
        if (isChanged)
            Q_EMIT changed();
    });
}

void DesktopAppearance::askForShell()
{
    const QString daemon = u"org.freedesktop.DBus"_s;
    const QDBusMessage question = DBusCall::make(daemon, u"/org/freedesktop/DBus"_s, daemon,
                                                 u"NameHasOwner"_s, {u"org.gnome.Shell"_s});
    DBusCall::whenAnswered(QDBusConnection::sessionBus().asyncCall(question), this,
                           [this](const QDBusMessage &reply) {
                               if (reply.type() == QDBusMessage::ReplyMessage
                                   && assign(m_hasDarkShell, reply.arguments().value(0).toBool()))
                                   Q_EMIT changed();
                           });
}

void DesktopAppearance::readSettingsStore()
{
    const QString program = QStandardPaths::findExecutable(u"gsettings"_s);
    if (program.isEmpty())
        return;
    m_settingsReader = std::make_unique<QProcess>();
    connect(m_settingsReader.get(), &QProcess::finished, this, [this](int exitCode) {
        readStoreLines(*m_settingsReader);
        // Without the schema there is nothing to watch either.
        if (exitCode == 0)
            watchSettingsStore();
    });
    m_settingsReader->setStandardErrorFile(QProcess::nullDevice());
    m_settingsReader->start(program, {u"list-recursively"_s, interfaceGroup});
}

void DesktopAppearance::watchSettingsStore()
{
    m_settingsMonitor = std::make_unique<QProcess>();
    connect(m_settingsMonitor.get(), &QProcess::readyReadStandardOutput, this,
            [this] { readStoreLines(*m_settingsMonitor); });
    m_settingsMonitor->setStandardErrorFile(QProcess::nullDevice());
    m_settingsMonitor->start(m_settingsReader->program(), {u"monitor"_s, interfaceGroup});
}

void DesktopAppearance::readStoreLines(QProcess &process)
{
    bool isChanged = false;
    while (process.canReadLine()) {
        // "org.gnome.desktop.interface color-scheme 'prefer-dark'", or "color-scheme: '...'".
        QString line = QString::fromUtf8(process.readLine()).trimmed();
        if (line.startsWith(interfaceGroup + u' '))
            line.remove(0, interfaceGroup.size() + 1);
        const qsizetype space = line.indexOf(u' ');
        if (space < 0)
            continue;
        QString key = line.left(space);
        if (key.endsWith(u':'))
            key.chop(1);
        isChanged |= apply(interfaceGroup, key, line.mid(space + 1).remove(u'\''));
    }
    if (isChanged)
        Q_EMIT changed();
}

void DesktopAppearance::settingChanged(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    if (arguments.size() < 3)
        return;
    const QVariant value = arguments[2].value<QDBusVariant>().variant();
    if (apply(arguments[0].toString(), arguments[1].toString(), value))
        Q_EMIT changed();
}

bool DesktopAppearance::apply(const QString &group, const QString &key, const QVariant &value)
{
    if (group == appearanceGroup) {
        if (key == u"color-scheme"_s) {
            const uint scheme = value.toUInt();
            return assign(m_dark,
                          scheme == 1       ? std::optional<bool>(true)
                              : scheme == 2 ? std::optional<bool>(false)
                                            : std::nullopt);
        }
        if (key == u"accent-color"_s)
            return assign(m_accent, portalAccent(value));
    } else if (group == interfaceGroup) {
        if (key == u"color-scheme"_s) {
            const QString scheme = value.toString();
            return assign(m_dark,
                          scheme == u"prefer-dark"_s        ? std::optional<bool>(true)
                              : scheme == u"prefer-light"_s ? std::optional<bool>(false)
                                                            : std::nullopt);
        }
        if (key == u"accent-color"_s)
            return assign(m_accent, namedAccent(value.toString()));
        if (key == u"text-scaling-factor"_s) {
            const double scale = value.toDouble();
            return scale > 0 && assign(m_textScale, scale);
        }
    }
    return false;
}

} // namespace Velloro
