// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Preferences.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

// Stored by one process and read by the next: within one process a cache could hide what the file holds.
static int printStoredText(const QString& folder, const QString& key)
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder);
    const auto text = Preferences::string(key);
    if (!text) return 2;
    QFile out;
    return out.open(stdout, QIODevice::WriteOnly) && out.write(text->toUtf8()) >= 0 ? 0 : 1;
}

class PreferencesTest : public QObject
{
    Q_OBJECT
    QTemporaryDir home_;

    QString file() const { return Preferences::folder() + "/Varnock.conf"; }

private Q_SLOTS:
    void initTestCase() { QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home_.path()); }
    void nothingIsStoredAtFirst() { QVERIFY(!Preferences::string("Varnock")); }
    void folderExistsAndIsOurs();
    void textComesBackInTheNextProcess_data();
    void textComesBackInTheNextProcess();
    void emptyTextIsNotTakenForNothing();
    void storedNonStringReadsAsEmptyText_data();
    void storedNonStringReadsAsEmptyText();
};

void PreferencesTest::folderExistsAndIsOurs()
{
    QVERIFY(QFileInfo(Preferences::folder()).isDir());
    QVERIFY(Preferences::folder().startsWith(home_.path()));
}

void PreferencesTest::textComesBackInTheNextProcess_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("quotes, commas, backslashes") << R"(a "b", c\n \\ ; # = % [x] \x41)";
    QTest::newRow("looks like a stored variant") << "@Variant(1)";
    QTest::newRow("leading @") << "@";
    QTest::newRow("NUL inside") << QStringLiteral("a") + QChar(0) + "1b" + QChar(0);
    QTest::newRow("blanks and line ends at the ends") << " \t\r\nx\r \n";
    QTest::newRow("beyond the first plane") << QString::fromUtf8("Fräse №5 \xF0\x9F\x94\xA7");
    QTest::newRow("a list of words") << "a, b, c";
    QTest::newRow("a megabyte") << QStringLiteral("MCNAME=\"Mill\", 5\n").repeated(65536);
}

void PreferencesTest::textComesBackInTheNextProcess()
{
    QFETCH(QString, text);
    Preferences::setString("Varnock", text);
    QCOMPARE(Preferences::string("Varnock"), text);

    QProcess reader;
    reader.start(QCoreApplication::applicationFilePath(), {"--print", home_.path(), "Varnock"});
    QVERIFY(reader.waitForFinished());
    QCOMPARE(reader.exitCode(), 0);
    QCOMPARE(QString::fromUtf8(reader.readAllStandardOutput()), text);
}

void PreferencesTest::emptyTextIsNotTakenForNothing()
{
    Preferences::setString("Varnock", {});
    QVERIFY(Preferences::string("Varnock"));
}

void PreferencesTest::storedNonStringReadsAsEmptyText_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("a list of words") << QByteArray("a, b");
    QTest::newRow("a point") << QByteArray("@Point(1 2)");
    QTest::newRow("an unreadable variant") << QByteArray("@Variant(\\0\\0)");
}

void PreferencesTest::storedNonStringReadsAsEmptyText()
{
    QFETCH(QByteArray, value);
    QFile stored(file());
    QVERIFY(stored.open(QIODevice::WriteOnly));
    stored.write("[General]\nVarnock=" + value + '\n');
    stored.close();
    QCOMPARE(Preferences::string("Varnock"), QString());
}

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const auto arguments = QCoreApplication::arguments();
    if (arguments.value(1) == "--print") return printStoredText(arguments.value(2), arguments.value(3));
    PreferencesTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "platform_preferences.moc"
