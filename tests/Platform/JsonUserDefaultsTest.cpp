#include "Platform/Linux/Files/JsonUserDefaults.h"
#include "Base/StringLiterals.h"
#include "Support/FileSizeLimit.h"
#include "Support/LogRecorder.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScopeGuard>
#include <QSet>
#include <QTemporaryDir>
#include <csignal>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Velloro {
namespace {

using Map = QMap<QString, QString>;

class JsonUserDefaultsTest : public ::testing::Test
{
protected:
    [[nodiscard]] QString path(const QString &name = u"Velloro/settings.json"_s) const
    {
        return m_directory.filePath(name);
    }

    void write(const QByteArray &content, const QString &name = u"Velloro/settings.json"_s) const
    {
        QDir().mkpath(QFileInfo(path(name)).path());
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    [[nodiscard]] QByteArray content(const QString &name = u"Velloro/settings.json"_s) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "absent";
    }

    [[nodiscard]] QJsonObject object() const { return QJsonDocument::fromJson(content()).object(); }

    [[nodiscard]] QStringList entries(const QString &name = u"Velloro"_s) const
    {
        return QDir(path(name))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    [[nodiscard]] struct stat status(const QString &name) const
    {
        struct stat result{};
        ::lstat(QFile::encodeName(path(name)).constData(), &result);
        return result;
    }

    [[nodiscard]] mode_t mode(const QString &name) const { return status(name).st_mode & 07777; }

    /// What a store says that is made now.
    [[nodiscard]] std::optional<DefaultsValue> stored(const QString &key) const
    {
        return JsonUserDefaults(path()).value(key);
    }

    LogRecorder m_log;
    QTemporaryDir m_directory;
};

TEST_F(JsonUserDefaultsTest, readsBackEveryTypeThatItWrote)
{
    QByteArray allBytes(256, '\0');
    for (int value = 0; value < 256; ++value)
        allBytes[value] = static_cast<char>(value);
    const std::vector<DefaultsValue> values{
        true,
        false,
        int64_t(0),
        int64_t(1),
        std::numeric_limits<int64_t>::min(),
        std::numeric_limits<int64_t>::max(),
        (int64_t(1) << 53) + 1,
        QString(),
        u"Hold to Talk"_s,
        u"\"\\\n日本語 😀"_s + QChar(0) + QChar(0xD800),
        QStringList(),
        QStringList{u""_s, u"b"_s, u"a"_s, u"a"_s},
        Map(),
        Map{{u"Small"_s, u"tiny"_s}, {u""_s, u""_s}},
        Map{{u"$data"_s, u"AAAA"_s}},
        Map{{u"$map"_s, u"x"_s}},
        Map{{u"$map"_s, u"x"_s}, {u"other"_s, u"y"_s}},
        QByteArray(),
        QByteArray("[{\"id\":1}]"),
        allBytes,
    };
    for (size_t index = 0; index < values.size(); ++index) {
        const QString key = u"velloro.key %1"_s.arg(index);
        JsonUserDefaults(path()).setValue(key, values[index]);
        EXPECT_EQ(stored(key), values[index]) << content().toStdString();
    }
    EXPECT_EQ(object().size(), values.size());

    JsonUserDefaults(path()).removeValue(u"velloro.key 0"_s);
    EXPECT_FALSE(stored(u"velloro.key 0"_s));
    EXPECT_TRUE(m_log.lines().isEmpty());
}

TEST_F(JsonUserDefaultsTest, keepsWhatItDoesNotKnow)
{
    const QByteArray unknown = R"({"null":null,"fraction":1.5,"big":1e300,"list":[1,"a",{"b":[]}],)"
                               R"("object":{"a":1},"tag":{"$new":"x"},"data":{"$data":"?"},)"
                               R"("more":{"$data":"AAAA","x":"y"},"map":{"$map":{"a":1}}})";
    write(unknown);
    JsonUserDefaults defaults(path());
    const QStringList keys = object().keys();
    for (const QString &key : keys)
        EXPECT_FALSE(defaults.value(key)) << key.toStdString();

    defaults.setValue(u"velloro.playSounds"_s, true);
    QJsonObject expected = QJsonDocument::fromJson(unknown).object();
    expected.insert(u"velloro.playSounds"_s, true);
    EXPECT_EQ(object(), expected);

    defaults.setValue(u"null"_s, int64_t(1));
    EXPECT_EQ(stored(u"null"_s), DefaultsValue(int64_t(1)));
}

TEST_F(JsonUserDefaultsTest, readsWhatAUserWrote)
{
    write("\xEF\xBB\xBF\n{ \"integer\": 3.0, \"exponent\": 2e3, \"twice\": 1, \"twice\": true }\n");
    EXPECT_EQ(stored(u"integer"_s), DefaultsValue(int64_t(3)));
    EXPECT_EQ(stored(u"exponent"_s), DefaultsValue(int64_t(2000)));
    EXPECT_EQ(stored(u"twice"_s), DefaultsValue(true));
}

TEST_F(JsonUserDefaultsTest, isForTheUsersEyesAlone)
{
    const mode_t mask = ::umask(0);
    JsonUserDefaults(path(u"new/Velloro/settings.json"_s)).setValue(u"key"_s, true);
    ::umask(mask);
    EXPECT_EQ(mode(u"new"_s), 0700U);
    EXPECT_EQ(mode(u"new/Velloro"_s), 0700U);
    EXPECT_EQ(mode(u"new/Velloro/settings.json"_s), 0600U);

    write("{}");
    ::chmod(QFile::encodeName(path()).constData(), 0644);
    ::chmod(QFile::encodeName(path(u"Velloro"_s)).constData(), 0755);
    JsonUserDefaults defaults(path());
    EXPECT_EQ(mode(u"Velloro/settings.json"_s), 0600U);
    EXPECT_EQ(mode(u"Velloro"_s), 0755U) << "the user's own decision";
}

TEST_F(JsonUserDefaultsTest, replacesTheFileButNotForAnUnchangedValue)
{
    JsonUserDefaults defaults(path());
    EXPECT_FALSE(QFile::exists(path())) << "there is nothing to be stored yet";
    defaults.setValue(u"key"_s, u"first"_s);
    QFile reader(path());
    ASSERT_TRUE(reader.open(QIODevice::ReadOnly));
    defaults.setValue(u"key"_s, u"second"_s);
    EXPECT_TRUE(reader.readAll().contains("first"))
        << "who reads meanwhile sees the whole old file";
    EXPECT_EQ(entries(), QStringList{u"settings.json"_s});

    // What a killed process left of a write goes at the next start.
    write("half a fi", u"Velloro/settings.json.part-aBc123"_s);
    const auto before = status(u"Velloro/settings.json"_s);
    defaults.setValue(u"key"_s, u"second"_s);
    JsonUserDefaults(path()).setValue(u"key"_s, u"second"_s);
    EXPECT_EQ(status(u"Velloro/settings.json"_s).st_ino, before.st_ino);
    EXPECT_EQ(entries(), QStringList{u"settings.json"_s});

    // Unless the file is not as it was left.
    QFile::remove(path());
    defaults.setValue(u"key"_s, u"second"_s);
    EXPECT_EQ(stored(u"key"_s), DefaultsValue(u"second"_s));
}

TEST_F(JsonUserDefaultsTest, writesThroughSymbolicLinks)
{
    write(R"({"old":true})", u"dotfiles/velloro.json"_s);
    QDir().mkpath(path(u"Velloro"_s));
    ASSERT_TRUE(QFile::link(u"link.json"_s, path()));
    ASSERT_TRUE(QFile::link(u"../dotfiles/velloro.json"_s, path(u"Velloro/link.json"_s)));
    {
        JsonUserDefaults defaults(path());
        EXPECT_EQ(defaults.value(u"old"_s), DefaultsValue(true));
        defaults.setValue(u"key"_s, true);
    }
    EXPECT_TRUE(S_ISLNK(status(u"Velloro/settings.json"_s).st_mode));
    EXPECT_TRUE(S_ISLNK(status(u"Velloro/link.json"_s).st_mode));
    EXPECT_TRUE(content(u"dotfiles/velloro.json"_s).contains("key"));
    EXPECT_EQ(entries(u"dotfiles"_s), QStringList{u"velloro.json"_s});

    // A link to a file that is not there yet makes that file.
    QFile::remove(path(u"dotfiles/velloro.json"_s));
    JsonUserDefaults(path()).setValue(u"key"_s, false);
    EXPECT_TRUE(content(u"dotfiles/velloro.json"_s).contains("key"));

    // What is not a file is never replaced.
    QFile::remove(path());
    ASSERT_EQ(::mkfifo(QFile::encodeName(path(u"pipe"_s)).constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(path(u"pipe"_s), path()));
    JsonUserDefaults nowhere(path());
    nowhere.setValue(u"key"_s, true);
    EXPECT_EQ(nowhere.value(u"key"_s), DefaultsValue(true));
    EXPECT_TRUE(S_ISFIFO(status(u"pipe"_s).st_mode));
}

TEST_F(JsonUserDefaultsTest, setsADamagedFileAsideAndStartsFresh)
{
    const QByteArray deep = QByteArray(100'000, '[') + QByteArray(100'000, ']');
    const QByteArray files[] = {
        "x",
        "[]",
        "null",
        QByteArray(100, '\0'),
        QByteArray("PK\x03\x04\0\0\xfe", 7),
        R"({"a":1,"b":"tr)",
        "{\"a\":1,\"b\":\"\xff\"}",
        "{\"a\":1,\"b\":" + deep + "}",
        R"({"a":1,"c":2,})",
    };
    QSet<QString> earlier;
    for (const QByteArray &bytes : files) {
        SCOPED_TRACE(bytes.left(40).toStdString());
        write(bytes);
        m_log.clear();
        JsonUserDefaults defaults(path());
        EXPECT_FALSE(defaults.value(u"a"_s));
        EXPECT_EQ(m_log.messages(u"UserDefaults"_s).size(), 1);
        defaults.setValue(u"new"_s, true);
        EXPECT_EQ(object().keys(), QStringList{u"new"_s});
        QStringList present = entries();
        present.removeOne(u"settings.json"_s);
        ASSERT_EQ(present.size(), earlier.size() + 1) << "none is overwritten by the next";
        for (const QString &name : present) {
            if (earlier.contains(name))
                continue;
            EXPECT_EQ(content(u"Velloro/"_s + name), bytes);
            EXPECT_TRUE(name.startsWith(u"settings.json.damaged-20"_s)) << name.toStdString();
            earlier.insert(name);
        }
    }

    // In an empty one, there is nothing to be set aside.
    write("");
    EXPECT_FALSE(stored(u"a"_s));
    EXPECT_EQ(entries().size(), earlier.size() + 1);
}

TEST_F(JsonUserDefaultsTest, keepsTheFileInWhichAValueOfTheWrongTypeIsReplaced)
{
    const QByteArray before = R"({"list":["Zürich",7],"number":"x","flag":true,"null":null})";
    write(before);
    JsonUserDefaults defaults(path());
    EXPECT_FALSE(defaults.value(u"list"_s));
    defaults.setValue(u"flag"_s, false);
    defaults.setValue(u"null"_s, false);
    EXPECT_EQ(entries(), QStringList{u"settings.json"_s}) << "nothing is lost by that";

    defaults.setValue(u"list"_s, QStringList{u"Bern"_s});
    defaults.setValue(u"number"_s, int64_t(1));
    EXPECT_EQ(m_log.messages(u"UserDefaults"_s).size(), 1);
    ASSERT_EQ(entries().size(), 2);
    const QJsonObject kept
        = QJsonDocument::fromJson(content(u"Velloro/"_s + entries().last())).object();
    EXPECT_EQ(kept.value(u"list"_s), QJsonDocument::fromJson(before)[u"list"_s]);
    EXPECT_EQ(kept.value(u"number"_s), u"x"_s);
    EXPECT_EQ(stored(u"list"_s), DefaultsValue(QStringList{u"Bern"_s}));
    EXPECT_EQ(stored(u"flag"_s), DefaultsValue(false));
}

TEST_F(JsonUserDefaultsTest, removesTheCopiesThatItKeptAndNothingElse)
{
    const QStringList others = {u"my.json.damaged-20260101-120000"_s, u"settings.json"_s,
                                u"settings.json.damaged-20260101"_s,
                                u"settings.json.damaged-mine"_s};
    for (const QString &name : others
             + QStringList{u"settings.json.damaged-20260101-120000"_s,
                           u"settings.json.damaged-20260101-120000-2"_s})
        write(R"({"list":7)", u"Velloro/"_s + name);
    JsonUserDefaults defaults(path());
    const auto replaceByAList = [&] {
        defaults.setValue(u"list"_s, int64_t(1));
        defaults.setValue(u"list"_s, QStringList{u"a"_s});
    };
    replaceByAList();
    ASSERT_EQ(entries().size(), others.size() + 4);
    defaults.removeKeptCopies();
    EXPECT_EQ(entries(), others);
    EXPECT_EQ(stored(u"list"_s), DefaultsValue(QStringList{u"a"_s}));

    replaceByAList();
    EXPECT_EQ(entries().size(), others.size() + 1) << "the next one is kept again";
    EXPECT_EQ(m_log.messages(u"UserDefaults"_s).size(), 3);
}

TEST_F(JsonUserDefaultsTest, setsAFileAsideThatItMayNotRead)
{
    write(R"({"a":1})");
    ::chmod(QFile::encodeName(path()).constData(), 0);
    // The superuser may read every file: somebody else does this.
    const bool isSuperuser = ::geteuid() == 0;
    constexpr uid_t nobody = 65534;
    if (isSuperuser) {
        for (const QString &name : {path(), path(u"Velloro"_s), m_directory.path()})
            ASSERT_EQ(::chown(QFile::encodeName(name).constData(), nobody, nobody), 0);
        ASSERT_EQ(::seteuid(nobody), 0);
    }
    const auto back = qScopeGuard([&] {
        if (isSuperuser) {
            EXPECT_EQ(::seteuid(0), 0);
        }
    });
    JsonUserDefaults(path()).setValue(u"b"_s, true);
    EXPECT_EQ(object().keys(), QStringList{u"b"_s});
    EXPECT_EQ(m_log.messages(u"UserDefaults"_s).size(), 1);
    ASSERT_EQ(entries().size(), 2);
    ::chmod(QFile::encodeName(path(u"Velloro/"_s + entries().last())).constData(), 0600);
    EXPECT_EQ(content(u"Velloro/"_s + entries().last()), R"({"a":1})");
}

TEST_F(JsonUserDefaultsTest, keepsInMemoryWhatItCannotWriteAndTriesAgain)
{
    write("in the way of the directory", u"Velloro"_s);
    JsonUserDefaults defaults(path());
    defaults.setValue(u"first"_s, u"1"_s);
    EXPECT_EQ(m_log.messages(u"UserDefaults"_s).size(), 1);
    EXPECT_EQ(defaults.value(u"first"_s), DefaultsValue(u"1"_s));

    QFile::remove(path(u"Velloro"_s));
    defaults.setValue(u"first"_s, u"1"_s);
    EXPECT_EQ(stored(u"first"_s), DefaultsValue(u"1"_s)) << "unchanged, but not yet stored";
    {
        const FileSizeLimit fullDisk(100);
        defaults.setValue(u"second"_s, QString(1000, u'x'));
    }
    EXPECT_EQ(m_log.messages(u"UserDefaults"_s).size(), 2);
    EXPECT_EQ(defaults.value(u"second"_s), DefaultsValue(QString(1000, u'x')));
    EXPECT_EQ(stored(u"first"_s), DefaultsValue(u"1"_s)) << "the old file is whole";
    EXPECT_FALSE(stored(u"second"_s));
    EXPECT_EQ(entries(), QStringList{u"settings.json"_s});

    defaults.setValue(u"third"_s, true);
    EXPECT_EQ(stored(u"second"_s), DefaultsValue(QString(1000, u'x')));
    EXPECT_EQ(m_log.messages(u"UserDefaults"_s).size(), 2);
}

/// Stores one number after another in a process of its own, until that is killed.
class KilledWriter
{
public:
    KilledWriter(const QString &path, int64_t first)
    {
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        m_process = ::fork();
        if (m_process == 0) {
            JsonUserDefaults defaults(path);
            for (int64_t number = first;; ++number) {
                defaults.setValue(u"number"_s, number);
                if (::write(ends[1], &number, sizeof number) != sizeof number)
                    ::_exit(1);
            }
        }
        ::close(ends[1]);
        m_stored = ends[0];
    }
    ~KilledWriter() { ::close(m_stored); }
    Q_DISABLE_COPY_MOVE(KilledWriter)

    /// The next number that has been stored, 0 when no more are.
    [[nodiscard]] int64_t nextStored()
    {
        int64_t number = 0;
        return ::read(m_stored, &number, sizeof number) == sizeof number ? number : 0;
    }

    /// Kills it, and returns the last number of which it said that it was stored.
    [[nodiscard]] int64_t kill(int64_t last)
    {
        ::kill(m_process, SIGKILL);
        int status = 0;
        ::waitpid(m_process, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status));
        while (const int64_t number = nextStored())
            last = number;
        return last;
    }

private:
    pid_t m_process = -1;
    int m_stored = -1;
};

TEST_F(JsonUserDefaultsTest, aKillAtAnyMomentOfThousandsOfWritesLosesNothing)
{
    const QStringList others{QString(20'000, u'x'), u"日本語"_s};
    JsonUserDefaults(path()).setValue(u"others"_s, others);
    std::mt19937 random(1); // NOLINT: the same moments each time, as far as the machine allows
    int64_t last = 0;
    for (int kills = 0; kills < 60; ++kills) {
        QElapsedTimer time;
        KilledWriter writer(path(), last + 1);
        (void)writer.nextStored();
        time.start();
        const int count = std::uniform_int_distribution(20, 60)(random);
        for (int written = 0; written < count; ++written)
            last = writer.nextStored();
        // At any moment of the writes that follow, not when one has just ended.
        const qint64 duration = time.nsecsElapsed() / count;
        const qint64 moment = time.nsecsElapsed() + qint64(random() % 1000) * duration / 500;
        while (time.nsecsElapsed() < moment) {
        }
        last = writer.kill(last);

        const auto number = JsonUserDefaults(path()).get<int64_t>(u"number"_s);
        ASSERT_TRUE(number) << content().left(100).toStdString();
        ASSERT_TRUE(*number == last || *number == last + 1) << *number << " after " << last;
        ASSERT_EQ(stored(u"others"_s), DefaultsValue(others));
        ASSERT_EQ(entries(), QStringList{u"settings.json"_s});
        last = *number;
    }
    EXPECT_GT(last, 2000);
    EXPECT_TRUE(m_log.lines().isEmpty());
}

} // namespace
} // namespace Velloro
