#include "TestEnvironment.h"

#include "HomeEnvironment.h"
#include "core/net/NetworkAccess.h"
#include "core/settings/Preferences.h"
#include "core/settings/Settings.h"
#include "core/sources/GroupCatalogue.h"
#include "core/util/Clock.h"
#include "core/util/DisplayTime.h"
#include "core/util/ResourceLocator.h"

#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>

#include <plist/plist.h>

#include <cstdlib>
#include <memory>

namespace {

std::unique_ptr<QTemporaryDir> s_home;
QDateTime s_now;

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
    s_home = std::make_unique<QTemporaryDir>(QDir::tempPath() + "/vantorel-test-XXXXXX");
    const QByteArray home = s_home->path().toLocal8Bit();
    pointHomeAt(home);
    setenv("XDG_RUNTIME_DIR", (home + "/runtime").constData(), 1);
    QDir().mkpath(s_home->path() + "/runtime");
    QFile::setPermissions(s_home->path() + "/runtime",
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    // Loopback only: no proxy may ever route a test elsewhere.
    for (const char *proxy :
         {"http_proxy", "https_proxy", "HTTP_PROXY", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
        unsetenv(proxy);
}

void TestEnvironment::setUpApplication()
{
    QCoreApplication::setOrganizationName(u"Vantorel"_s);
    QCoreApplication::setApplicationName(u"Vantorel"_s);
    resetState();
}

void TestEnvironment::tearDownApplication()
{
    NetworkAccess::shutdown();
}

QString TestEnvironment::home()
{
    return s_home->path();
}

QString TestEnvironment::makeFolder(const QString &name)
{
    static int counter = 0;
    const QString path = home() + u"/work/%1-%2"_s.arg(name).arg(++counter);
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
    Clock::setSource({});
    DisplayTime::setUtc(false);
}

void TestEnvironment::setNow(const QDateTime &now)
{
    s_now = now;
    Clock::setSource([] { return s_now; });
}

void TestEnvironment::advance(qint64 seconds)
{
    s_now = s_now.addSecs(seconds);
}

bool TestEnvironment::writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray TestEnvironment::readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

bool TestEnvironment::writePropertyList(const QString &path, const QVariantMap &root, bool binary)
{
    plist_t plist = toPlist(root);
    char *bytes = nullptr;
    uint32_t length = 0;
    (binary ? plist_to_bin : plist_to_xml)(plist, &bytes, &length);
    plist_free(plist);
    const bool ok = bytes && writeFile(path, QByteArray(bytes, qsizetype(length)));
    free(bytes);
    return ok;
}

QString TestEnvironment::installDefinitions(const QString &fileName, const QVariantMap &root)
{
    const QString path = makeFolder(u"definitions"_s) + '/' + fileName;
    if (!writePropertyList(path, root))
        qFatal("cannot write %s", qPrintable(fileName));
    ResourceLocator::setDefinitionsFolder(QFileInfo(path).path());
    return path;
}

QStringList TestEnvironment::installGroups(int count, const QString &url, const QString &source)
{
    const QString folder = makeFolder(u"definitions"_s);
    QStringList files;
    for (const GroupCatalogue::Group &group : GroupCatalogue::dataGroups()) {
        QVariantMap nodes;
        for (int i = 0; i < count; ++i) {
            const QString name = group.name + QString::number(i);
            files << name + u".bin"_s;
            nodes.insert(u"Node%1"_s.arg(i), nodeDict(files.last(), name, url, source));
        }
        if (group.layout == GroupCatalogue::Layout::Domains) {
            nodes.insert(u"DomainName"_s, group.name);
            nodes = {{u"Domain0"_s, nodes}};
        }
        if (!writePropertyList(folder + u"/Data%1.plist"_s.arg(group.name), nodes))
            qFatal("cannot write definitions");
    }
    ResourceLocator::setDefinitionsFolder(folder);
    return files;
}

QVariantMap TestEnvironment::nodeDict(const QString &dest, const QString &name, const QString &url,
                                      const QString &source)
{
    // As in the shipped files: pictures are file type 0, everything else a text report.
    static const QRegularExpression picture(u"\\.(png|jpe?g|gif|webp|tiff?|svg)$"_s,
                                            QRegularExpression::CaseInsensitiveOption);
    const QString shown = name.isEmpty() ? dest : name;
    return {{u"URL"_s, url},
            {u"SourceFileName"_s, source},
            {u"DestFileName"_s, dest},
            {u"NodeName"_s, shown},
            {u"NodeTitle"_s, shown + u" title"_s},
            {u"FileType"_s, picture.match(dest).hasMatch() ? 0 : 1}};
}

QProcessEnvironment TestEnvironment::headlessEnvironment()
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        env.remove(QLatin1String(name));
    return env;
}

qint64 TestEnvironment::processKilobytes(const char *field)
{
    for (const QByteArray &line : readFile(u"/proc/self/status"_s).split('\n')) {
        if (line.startsWith(QByteArray(field) + ':'))
            return line.mid(qstrlen(field) + 1).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}
