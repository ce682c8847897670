#pragma once

#include <QDateTime>
#include <QDir>
#include <QProcessEnvironment>
#include <QSettings>
#include <QString>
#include <QVariantMap>
#include <QtTest>

using namespace Qt::StringLiterals;

// Every test program runs in a home of its own: HOME and the XDG folders point into a temporary
// directory made before the application object exists, so settings, data and configuration never
// touch the real user's. The bundled resources of the build tree are used.
class TestEnvironment {
public:
    // Before the application object is created; after it exists (names, resources, fresh
    // preferences); after the last test, when the network work ends so that the sanitizer build's
    // leak checker sees a finished process.
    static void setUp();
    static void setUpApplication();
    static void tearDownApplication();

    static QString home();
    // A new empty folder inside the temporary home.
    static QString makeFolder(const QString &name);
    // Forgets every stored setting and resets the preferences, the clock and the folders where
    // files are looked up (the bundled resources of the build tree, no definitions folder).
    static void resetState();

    // Fixes "now" for everything that asks the core's clock; advance() moves it on.
    static void setNow(const QDateTime &now);
    static void advance(qint64 seconds);

    // This process's environment without any display, as a script on a server has it.
    static QProcessEnvironment headlessEnvironment();

    static bool writeFile(const QString &path, const QByteArray &bytes);
    // The file's bytes, or "<missing>" when it cannot be read.
    static QByteArray readFile(const QString &path);
    // Writes a property list (XML unless binary) with these contents.
    static bool writePropertyList(const QString &path, const QVariantMap &root,
                                  bool binary = false);
    // Writes the root as fileName into a new definitions folder that the loader reads first, as
    // if given on the command line; returns the file's path.
    static QString installDefinitions(const QString &fileName, const QVariantMap &root,
                                      bool binary = false);
    // Definition files for every data group, in a new folder read first: `count` nodes each,
    // named after the group and numbered ("Sun0"), with data files "Sun0.bin" fetched from
    // url + source. Returns the data file names in view order.
    static QStringList installGroups(int count, const QString &url, const QString &source);
    // A node definition with the keys every node needs, and the file type that its file name
    // suggests: 0 (a picture) for a picture's extension, otherwise 1 (a text report).
    static QVariantMap nodeDict(const QString &dest, const QString &name = {},
                                const QString &url = QStringLiteral("http://127.0.0.1/"),
                                const QString &source = QStringLiteral("file.bin"));
    // A field of /proc/self/status in kilobytes ("VmRSS", "VmHWM"), or -1.
    static qint64 processKilobytes(const char *field);
};

// The columns of a data-driven test in one call: columns<int, QString>("kind", "text").
template <typename... Types, typename... Names> void columns(Names... names)
{
    (QTest::addColumn<Types>(names), ...);
}

// The current row's value in a column, as QFETCH reads it, for use inside an expression.
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
