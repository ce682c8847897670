#pragma once

#include <QDateTime>
#include <QDir>
#include <QProcessEnvironment>
#include <QSettings>
#include <QString>
#include <QVariantMap>
#include <QtTest>

using namespace Qt::StringLiterals;

// Every test program runs in a temporary home of its own (HOME and the XDG folders), made before
// the application object exists, so that no test touches the real user's files.
class TestEnvironment {
public:
    // Before the application exists; after; and after the last test, when the network work ends
    // so that the sanitizer build's leak checker sees a finished process.
    static void setUp();
    static void setUpApplication();
    static void tearDownApplication();

    static QString home();
    static QString makeFolder(const QString &name);
    // Forgets the settings; resets the preferences, the clock, the zone times are shown in and
    // where files are looked up.
    static void resetState();

    // Fixes the core's clock; advance() moves it on.
    static void setNow(const QDateTime &now);
    static void advance(qint64 seconds);

    // This process's environment without any display.
    static QProcessEnvironment headlessEnvironment();

    static bool writeFile(const QString &path, const QByteArray &bytes);
    // The file's bytes, or "<missing>" when it cannot be read.
    static QByteArray readFile(const QString &path);
    static bool writePropertyList(const QString &path, const QVariantMap &root,
                                  bool binary = false);
    // Writes the file into a new definitions folder that the loader reads first; returns its path.
    static QString installDefinitions(const QString &fileName, const QVariantMap &root);
    // Definition files for every data group, read first: `count` nodes each, "Sun0" and so on,
    // with data files "Sun0.bin" fetched from url + source. Returns those, in view order.
    static QStringList installGroups(int count, const QString &url, const QString &source);
    // A node definition with the keys every node needs; file type 0 (a picture) for a picture's
    // extension, otherwise 1 (a text report).
    static QVariantMap nodeDict(const QString &dest, const QString &name = {},
                                const QString &url = QStringLiteral("http://127.0.0.1/"),
                                const QString &source = QStringLiteral("file.bin"));
    // A field of /proc/self/status in kilobytes ("VmRSS", "VmHWM"), or -1.
    static qint64 processKilobytes(const char *field);
};

// columns<int, QString>("kind", "text") adds both columns.
template <typename... Types, typename... Names> void columns(Names... names)
{
    (QTest::addColumn<Types>(names), ...);
}

// The current row's value in a column, as QFETCH reads it.
template <typename T> const T &fetch(const char *column)
{
    return *static_cast<T *>(QTest::qData(column, qMetaTypeId<T>()));
}

#define VANTOREL_TEST_MAIN_WITH(Application, TestObject)                                           \
    int main(int argc, char **argv)                                                                \
    {                                                                                              \
        TestEnvironment::setUp();                                                                  \
        Application app(argc, argv);                                                               \
        TestEnvironment::setUpApplication();                                                       \
        TestObject test;                                                                           \
        const int result = QTest::qExec(&test, argc, argv);                                        \
        TestEnvironment::tearDownApplication();                                                    \
        return result;                                                                             \
    }
#define VANTOREL_TEST_CORE_MAIN(TestObject) VANTOREL_TEST_MAIN_WITH(QCoreApplication, TestObject)
#define VANTOREL_TEST_MAIN(TestObject) VANTOREL_TEST_MAIN_WITH(QApplication, TestObject)
