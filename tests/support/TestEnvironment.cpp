#include "TestEnvironment.h"

#include "HomeEnvironment.h"
#include "core/net/NetworkAccess.h"
#include "core/settings/Preferences.h"
#include "core/settings/Settings.h"
#include "core/util/Clock.h"
#include "core/util/ResourceLocator.h"

#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <plist/plist.h>

#include <cstdlib>
#include <memory>

namespace {

std::unique_ptr<QTemporaryDir> &homeDir()
{
    static std::unique_ptr<QTemporaryDir> dir;
    return dir;
}

QDateTime &fixedNow()
{
    static QDateTime now;
    return now;
}

plist_t toPlist(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QVariantMap: {
        plist_t dict = plist_new_dict();
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            plist_dict_set_item(dict, it.key().toUtf8().constData(), toPlist(it.value()));
        return dict;
    }
    case QMetaType::QVariantList: {
        plist_t array = plist_new_array();
        for (const QVariant &item : value.toList())
            plist_array_append_item(array, toPlist(item));
        return array;
    }
    case QMetaType::Bool:
        return plist_new_bool(value.toBool());
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return plist_new_uint(uint64_t(value.toLongLong()));
    case QMetaType::Double:
        return plist_new_real(value.toDouble());
    default:
        return plist_new_string(value.toString().toUtf8().constData());
    }
}

} // namespace

void TestEnvironment::setUp()
{
    homeDir() =
        std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/vantorel-test-XXXXXX"));
    const QByteArray home = homeDir()->path().toLocal8Bit();
    pointHomeAt(home);
    setenv("XDG_RUNTIME_DIR", (home + "/runtime").constData(), 1);
    QDir().mkpath(homeDir()->path() + QStringLiteral("/runtime"));
    QFile::setPermissions(homeDir()->path() + QStringLiteral("/runtime"),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    // Loopback only: no proxy may ever route a test elsewhere.
    unsetenv("http_proxy");
    unsetenv("https_proxy");
    unsetenv("HTTP_PROXY");
    unsetenv("HTTPS_PROXY");
    unsetenv("all_proxy");
    unsetenv("ALL_PROXY");
}

void TestEnvironment::setUpApplication()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Vantorel"));
    QCoreApplication::setApplicationName(QStringLiteral("Vantorel"));
    resetState();
}

void TestEnvironment::tearDownApplication()
{
    NetworkAccess::shutdown();
}

QString TestEnvironment::home()
{
    return homeDir()->path();
}

QString TestEnvironment::makeFolder(const QString &name)
{
    static int counter = 0;
    const QString path = home() + QStringLiteral("/work/%1-%2").arg(name).arg(++counter);
    QDir().mkpath(path);
    return path;
}

void TestEnvironment::resetState()
{
    QSettings &settings = Settings::store();
    settings.clear();
    settings.sync();
    Preferences::shared().reset();
    ResourceLocator::setResourceFolder(QStringLiteral(VANTOREL_TEST_RESOURCE_DIR));
    ResourceLocator::setDefinitionsFolder(QString());
    useSystemClock();
}

void TestEnvironment::setNow(const QDateTime &now)
{
    fixedNow() = now;
    Clock::setSource([] { return fixedNow(); });
}

void TestEnvironment::advance(qint64 seconds)
{
    fixedNow() = fixedNow().addSecs(seconds);
}

void TestEnvironment::useSystemClock()
{
    Clock::setSource({});
}

bool TestEnvironment::writePropertyList(const QString &path, const QVariantMap &root, bool binary)
{
    plist_t plist = toPlist(root);
    char *bytes = nullptr;
    uint32_t length = 0;
    if (binary)
        plist_to_bin(plist, &bytes, &length);
    else
        plist_to_xml(plist, &bytes, &length);
    plist_free(plist);
    if (!bytes)
        return false;
    QFile file(path);
    const bool ok = file.open(QIODevice::WriteOnly) && file.write(bytes, length) == qint64(length);
    free(bytes);
    return ok;
}

QVariantMap TestEnvironment::nodeDict(const QString &dest, const QString &name, const QString &url,
                                      const QString &source)
{
    // As in the shipped files: pictures are file type 0, everything else a text report.
    static const QRegularExpression picture(QStringLiteral("\\.(png|jpe?g|gif|webp|tiff?|svg)$"),
                                            QRegularExpression::CaseInsensitiveOption);
    return {
        {QStringLiteral("URL"), url},
        {QStringLiteral("SourceFileName"), source},
        {QStringLiteral("DestFileName"), dest},
        {QStringLiteral("NodeName"), name.isEmpty() ? dest : name},
        {QStringLiteral("NodeTitle"), (name.isEmpty() ? dest : name) + QStringLiteral(" title")},
        {QStringLiteral("FileType"), picture.match(dest).hasMatch() ? 0 : 1}};
}

QProcessEnvironment TestEnvironment::headlessEnvironment()
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("DISPLAY"));
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    env.remove(QStringLiteral("QT_QPA_PLATFORM"));
    return env;
}
