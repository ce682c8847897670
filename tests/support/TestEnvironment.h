#pragma once

#include <QDateTime>
#include <QProcessEnvironment>
#include <QString>
#include <QVariantMap>

// Every test program runs in a home of its own: HOME and the XDG folders point into a temporary
// directory made before the application object exists, so settings, data and configuration never
// touch the real user's. The bundled resources of the build tree are used.
class TestEnvironment {
public:
    // Before the application object is created.
    static void setUp();
    // After it exists: names, resource folder, fresh preferences.
    static void setUpApplication();
    // After the last test, before the application object goes: ends the network work, so that
    // the leak checker of the sanitizer build sees a finished process.
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
    static void useSystemClock();

    // This process's environment without any display, for running the command-line modes the
    // way a script on a server does.
    static QProcessEnvironment headlessEnvironment();

    // Writes a property list (XML unless binary) with these contents.
    static bool writePropertyList(const QString &path, const QVariantMap &root,
                                  bool binary = false);
    // A node definition with the keys every node needs, and the file type that its file name
    // suggests: 0 (a picture) for a picture's extension, otherwise 1 (a text report).
    static QVariantMap nodeDict(const QString &dest, const QString &name = {},
                                const QString &url = QStringLiteral("http://127.0.0.1/"),
                                const QString &source = QStringLiteral("file.bin"));
};

#define VANTOREL_TEST_CORE_MAIN(TestObject)                                                        \
    int main(int argc, char **argv)                                                                \
    {                                                                                              \
        TestEnvironment::setUp();                                                                  \
        QCoreApplication app(argc, argv);                                                          \
        TestEnvironment::setUpApplication();                                                       \
        TestObject test;                                                                           \
        const int result = QTest::qExec(&test, argc, argv);                                        \
        TestEnvironment::tearDownApplication();                                                    \
        return result;                                                                             \
    }

#define VANTOREL_TEST_MAIN(TestObject)                                                             \
    int main(int argc, char **argv)                                                                \
    {                                                                                              \
        TestEnvironment::setUp();                                                                  \
        QApplication app(argc, argv);                                                              \
        TestEnvironment::setUpApplication();                                                       \
        TestObject test;                                                                           \
        const int result = QTest::qExec(&test, argc, argv);                                        \
        TestEnvironment::tearDownApplication();                                                    \
        return result;                                                                             \
    }
