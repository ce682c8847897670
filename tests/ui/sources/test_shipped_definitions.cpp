#include "TestEnvironment.h"

#include "core/shell/ToolbarItems.h"

#include "core/sources/Domain.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"
#include "core/sources/PropertyList.h"
#include "core/util/DescriptionText.h"
#include "ui/common/NamedImage.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QRegularExpression>
#include <QSet>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>
#include <QUrl>
#include <QXmlStreamReader>
#include <QtTest>

#include <algorithm>

// The definition files and the welcome page that ship with the application, read the way the
// application reads them: every entry must load, point at a secure address, store its data under
// a name of its own, and carry a description that survives the ASCII conversion and reads as
// HTML.
class TestShippedDefinitions : public QObject {
    Q_OBJECT

private slots:
    void init();
    void definitionFile_data();
    void definitionFile();
    void namesUniqueAcrossFiles();
    void alertsBulletins();
    void welcomePage();
    void artworkForEveryState();

private:
    struct Entry {
        QString where;    // "DataSun.plist Domain0/Node3", for messages
        QVariantMap dict; // the entry as the file holds it
        const Node *node; // the node the loader made of it
    };
    // Loads a file through its group and pairs each raw entry with the node made of it, checking
    // on the way that the loader's probing reached every entry and nothing else is in the file.
    // On failure the list is empty and _loadProblem says why.
    QList<Entry> load(const QString &fileName);
    QList<Entry> fail(const QString &fileName, const QString &why)
    {
        _loadProblem = fileName + QStringLiteral(": ") + why;
        return {};
    }
    QString _loadProblem;
    QString _data;
    std::vector<std::unique_ptr<NodeGroup>> _groups;
};

namespace {

const QStringList kFiles{"DataSun.plist", "DataGraphs.plist", "DataAurora.plist", "DataEarth.plist",
                         "DataAlerts.plist"};

QString shippedPath(const QString &fileName)
{
    return QStringLiteral(VANTOREL_TEST_RESOURCE_DIR "/") + fileName;
}

// Problems that make a piece of HTML unfit to show: characters that the ASCII step would
// damage, tags outside the small set we use or not properly nested, bare "<", ">" or "&",
// entities that Qt does not know, and links that are not https. Empty when it is fine.
QString htmlProblem(const QString &html)
{
    if (DescriptionText::lossyAscii(html) != html)
        return QStringLiteral("characters outside ASCII");
    static const QSet<QString> allowed{"p",  "b",  "i",  "sup",   "sub", "br", "h2",
                                       "h3", "ul", "li", "table", "tr",  "td", "a"};
    static const QRegularExpression tag(QStringLiteral("<(/?)([a-zA-Z0-9]+)((?:\\s[^<>]*)?)>"));
    static const QRegularExpression href(QStringLiteral("href=\"([^\"]*)\""));
    QStringList open;
    QString text = html;
    for (auto it = tag.globalMatch(html); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        const QString name = m.captured(2).toLower();
        if (!allowed.contains(name))
            return QStringLiteral("tag <%1>").arg(name);
        const auto link = href.match(m.captured(3));
        if (link.hasMatch() && QUrl(link.captured(1)).scheme() != QLatin1String("https"))
            return QStringLiteral("link %1").arg(link.captured(1));
        if (name == QLatin1String("br"))
            continue;
        if (m.captured(1).isEmpty()) {
            open << name;
        } else if (open.isEmpty() || open.takeLast() != name) {
            return QStringLiteral("</%1> does not close the open tag").arg(name);
        }
    }
    if (!open.isEmpty())
        return QStringLiteral("<%1> never closed").arg(open.last());
    text.remove(tag);
    if (text.contains(QLatin1Char('<')) || text.contains(QLatin1Char('>')))
        return QStringLiteral("a bare < or >");
    static const QRegularExpression entity(QStringLiteral("&([A-Za-z]+|#[0-9]+);"));
    if (QString(text).remove(entity).contains(QLatin1Char('&')))
        return QStringLiteral("a bare &");
    QTextDocument document;
    document.setHtml(html);
    const auto leftover = entity.match(document.toPlainText());
    if (leftover.hasMatch())
        return QStringLiteral("unknown entity %1").arg(leftover.captured(0));
    return QString();
}

QString plainText(const QString &html)
{
    QTextDocument document;
    document.setHtml(html);
    return document.toPlainText();
}

// The first key that a dictionary of the XML file holds twice (a copied entry that was not
// renumbered, which the parsed dictionary would hide by keeping only one), or why the file is
// not well-formed XML. Empty when neither.
QString duplicateKeyProblem(const QByteArray &xml)
{
    QXmlStreamReader reader(xml);
    QList<QSet<QString>> dictionaries;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement() && reader.name() == QLatin1String("dict")) {
            dictionaries.append(QSet<QString>());
        } else if (reader.isEndElement() && reader.name() == QLatin1String("dict")) {
            dictionaries.removeLast();
        } else if (reader.isStartElement() && reader.name() == QLatin1String("key") &&
                   !dictionaries.isEmpty()) {
            const QString key = reader.readElementText();
            if (dictionaries.last().contains(key))
                return QStringLiteral("key %1 twice in one dictionary").arg(key);
            dictionaries.last().insert(key);
        }
    }
    return reader.hasError() ? QStringLiteral("not XML: ") + reader.errorString() : QString();
}

bool isHttpsAddress(const QString &address)
{
    const QUrl url(address, QUrl::StrictMode);
    return url.isValid() && url.scheme() == QLatin1String("https") && !url.host().isEmpty() &&
           !address.contains(QRegularExpression(QStringLiteral("\\s")));
}

} // namespace

void TestShippedDefinitions::init()
{
    TestEnvironment::resetState();
    _data = TestEnvironment::makeFolder(QStringLiteral("data"));
    _groups.clear();
}

QList<TestShippedDefinitions::Entry> TestShippedDefinitions::load(const QString &fileName)
{
    _loadProblem.clear();
    QList<Entry> entries;
    const std::optional<QVariantMap> root = PropertyList::dictionaryFromFile(shippedPath(fileName));
    if (!root)
        return fail(fileName, QStringLiteral("does not read as a dictionary"));
    // What is checked here is what the repository holds.
    QFile built(shippedPath(fileName));
    QFile source(QStringLiteral(VANTOREL_TEST_SOURCE_RESOURCE_DIR "/") + fileName);
    if (!built.open(QIODevice::ReadOnly) || !source.open(QIODevice::ReadOnly))
        return fail(fileName, QStringLiteral("cannot be opened"));
    const QByteArray contents = source.readAll();
    if (built.readAll() != contents)
        return fail(fileName, QStringLiteral("the build's copy differs from the source tree"));
    if (const QString problem = duplicateKeyProblem(contents); !problem.isEmpty())
        return fail(fileName, problem);

    // Every key must be one the loader probes: DomainN / NodeN numbered from 0 without gaps.
    auto numberedKeys = [](const QString &prefix, qsizetype count) {
        QStringList keys;
        for (qsizetype i = 0; i < count; ++i)
            keys << prefix + QString::number(i);
        return keys;
    };
    auto sameKeys = [](QStringList a, QStringList b) {
        a.sort();
        b.sort();
        return a == b;
    };

    if (fileName == QLatin1String("DataAlerts.plist")) {
        auto *group = new FlatGroup;
        _groups.emplace_back(group);
        if (!group->loadDictionaryData(fileName, _data))
            return fail(fileName, QStringLiteral("not loaded"));
        if (!sameKeys(root->keys(), numberedKeys(QStringLiteral("Node"), root->size())))
            return fail(fileName,
                        QStringLiteral("keys other than Node0 to Node%1").arg(root->size() - 1));
        if (group->nodeCount() != root->size())
            return fail(fileName, QStringLiteral("an entry was rejected"));
        for (int i = 0; i < group->nodeCount(); ++i)
            entries.append({fileName + QStringLiteral(" Node%1").arg(i),
                            root->value(QStringLiteral("Node%1").arg(i)).toMap(),
                            group->nodeAt(i)});
        return entries;
    }

    auto *group = new DomainGroup;
    _groups.emplace_back(group);
    if (!group->loadDomainDataForGroup(QFileInfo(fileName).baseName().mid(4),
                                       int(kFiles.indexOf(fileName)), fileName, _data))
        return fail(fileName, QStringLiteral("not loaded"));
    if (!sameKeys(root->keys(), numberedKeys(QStringLiteral("Domain"), root->size())))
        return fail(fileName,
                    QStringLiteral("keys other than Domain0 to Domain%1").arg(root->size() - 1));
    if (group->domains().size() != root->size())
        return fail(fileName, QStringLiteral("a domain was skipped"));
    QSet<QString> domainNames;
    for (int d = 0; d < root->size(); ++d) {
        const QVariantMap domainDict = root->value(QStringLiteral("Domain%1").arg(d)).toMap();
        const Domain *domain = group->domains().at(d);
        const QStringList nodeKeys = numberedKeys(QStringLiteral("Node"), domainDict.size() - 1);
        const QString where = QStringLiteral("Domain%1").arg(d);
        if (domain->domainName().trimmed().isEmpty() || domainNames.contains(domain->domainName()))
            return fail(fileName, where + QStringLiteral(" has no name of its own"));
        if (nodeKeys.isEmpty() ||
            !sameKeys(domainDict.keys(), nodeKeys + QStringList{"DomainName"}))
            return fail(fileName, where + QStringLiteral(" holds keys other than DomainName and "
                                                         "Node0 upwards, or no node"));
        if (domain->childrenCount() != nodeKeys.size())
            return fail(fileName, where + QStringLiteral(": an entry was rejected"));
        domainNames << domain->domainName();
        for (int n = 0; n < nodeKeys.size(); ++n)
            entries.append({fileName + QStringLiteral(" Domain%1/Node%2").arg(d).arg(n),
                            domainDict.value(nodeKeys.at(n)).toMap(), domain->childAtIndex(n)});
    }
    return entries;
}

void TestShippedDefinitions::definitionFile_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<int>("minimumNodes");
    QTest::addColumn<int>("fileType");
    QTest::newRow("Sun") << "DataSun.plist" << 12 << 0;
    QTest::newRow("Graphs") << "DataGraphs.plist" << 8 << 0;
    QTest::newRow("Aurora") << "DataAurora.plist" << 4 << 0;
    QTest::newRow("Earth") << "DataEarth.plist" << 4 << 0;
    QTest::newRow("Alerts") << "DataAlerts.plist" << 8 << 1;
}

void TestShippedDefinitions::definitionFile()
{
    QFETCH(QString, fileName);
    QFETCH(int, minimumNodes);
    QFETCH(int, fileType);

    const QList<Entry> entries = load(fileName);
    QVERIFY2(_loadProblem.isEmpty(), qPrintable(_loadProblem));
    QVERIFY2(entries.size() >= minimumNodes, qPrintable(QString::number(entries.size())));

    const QSet<QString> nodeKeys{"URL",       "SourceFileName", "DestFileName", "NodeName",
                                 "NodeTitle", "Description",    "FileType",     "DataSource"};
    const QList<QByteArray> imageFormats = QImageReader::supportedImageFormats();
    QSet<QString> titles;
    for (const Entry &e : entries) {
        const QByteArray whereText = e.where.toUtf8();
        const char *where = whereText.constData();
        const QStringList keys = e.dict.keys();
        QVERIFY2(QSet<QString>(keys.cbegin(), keys.cend()) == nodeKeys, where);
        QVERIFY2(Node::definitionProblem(e.dict).isEmpty(), where);
        QVERIFY2(e.node->fileName() == e.dict.value("DestFileName").toString(), where);

        QVERIFY2(!e.node->itemName().trimmed().isEmpty(), where);
        QVERIFY2(!e.node->nodeTitle().trimmed().isEmpty(), where);
        QVERIFY2(!titles.contains(e.node->nodeTitle()), where);
        titles << e.node->nodeTitle();

        // An integer in the file, not text that happens to convert.
        QVERIFY2(e.dict.value("FileType").typeId() == QMetaType::LongLong, where);
        QVERIFY2(e.node->fileType() == fileType, where);

        QVERIFY2(e.node->URL().endsWith(QLatin1Char('/')), where);
        QVERIFY2(!e.dict.value("SourceFileName").toString().startsWith(QLatin1Char('/')), where);
        QVERIFY2(isHttpsAddress(e.node->sourceURL()), where);
        QVERIFY2(isHttpsAddress(e.node->dataSource()), where);

        // Pictures must be in a format the image views can show; bulletins are text files.
        for (const QString &name :
             {e.dict.value("SourceFileName").toString(), e.node->fileName()}) {
            const QByteArray suffix = QFileInfo(name).suffix().toLower().toLatin1();
            if (fileType == 0)
                QVERIFY2(imageFormats.contains(suffix),
                         qPrintable(e.where + QLatin1Char(' ') + name));
            else
                QVERIFY2(suffix == "txt", qPrintable(e.where + QLatin1Char(' ') + name));
        }

        const QString description = e.node->itemDescription();
        const QString problem = htmlProblem(description);
        QVERIFY2(problem.isEmpty(), qPrintable(e.where + QStringLiteral(": ") + problem));
        const QString text = plainText(description);
        const qsizetype words =
            text.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts).size();
        QVERIFY2(words >= 80 && words <= 200,
                 qPrintable(e.where + QStringLiteral(": %1 words").arg(words)));
        QVERIFY2(text.contains(QLatin1String("courtesy"), Qt::CaseInsensitive),
                 qPrintable(e.where + QStringLiteral(": no credit line")));
    }
}

void TestShippedDefinitions::namesUniqueAcrossFiles()
{
    // Data files share one folder and name the per-item settings; item names label the shared
    // activity log; a domain's name keys its remembered expansion. Data file names are compared
    // ignoring case, since some file systems do.
    QHash<QString, QString> dataFiles;
    QHash<QString, QString> itemNames;
    for (const QString &fileName : kFiles) {
        const QList<Entry> entries = load(fileName);
        QVERIFY2(_loadProblem.isEmpty(), qPrintable(_loadProblem));
        for (const Entry &e : entries) {
            const QString dest = e.node->fileName().toLower();
            QVERIFY2(!dataFiles.contains(dest),
                     qPrintable(e.where + QStringLiteral(" and ") + dataFiles.value(dest)));
            dataFiles.insert(dest, e.where);
            const QString name = e.node->itemName().toLower();
            QVERIFY2(!itemNames.contains(name),
                     qPrintable(e.where + QStringLiteral(" and ") + itemNames.value(name)));
            itemNames.insert(name, e.where);
        }
    }
    QSet<QString> domainNames;
    for (const auto &group : _groups) {
        if (auto *domainGroup = qobject_cast<DomainGroup *>(group.get())) {
            for (const Domain *domain : domainGroup->domains()) {
                QVERIFY2(!domainNames.contains(domain->domainName()),
                         qPrintable(domain->domainName()));
                domainNames << domain->domainName();
            }
        }
    }
}

void TestShippedDefinitions::alertsBulletins()
{
    FlatGroup group;
    QVERIFY(group.loadDictionaryData(QStringLiteral("DataAlerts.plist"), _data));
    QVERIFY(group.nodeCount() > 0);
    // "Reload Daily Report" reloads the first bulletin; the two reformatted bulletins are chosen
    // by their data file names.
    QCOMPARE(group.nodeAt(0)->fileName(), QStringLiteral("RSGA.txt"));
    QStringList names;
    for (const Node *node : group.nodes())
        names << node->fileName();
    QCOMPARE(names.count(QStringLiteral("RSGA.txt")), 1);
    QCOMPARE(names.count(QStringLiteral("WKHF.txt")), 1);
}

void TestShippedDefinitions::welcomePage()
{
    QFile file(QStringLiteral(VANTOREL_TEST_RESOURCE_DIR "/DefaultDescription.txt"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString html = QString::fromUtf8(file.readAll());
    const QString problem = htmlProblem(html);
    QVERIFY2(problem.isEmpty(), qPrintable(problem));

    // Each status symbol has a row of its own in the table that explains them.
    QTextDocument document;
    document.setHtml(html);
    QStringList symbols;
    for (QTextFrame *frame : document.rootFrame()->childFrames()) {
        if (auto *table = qobject_cast<QTextTable *>(frame)) {
            for (int row = 0; row < table->rows(); ++row) {
                const QTextTableCell cell = table->cellAt(row, 0);
                QTextCursor cursor = cell.firstCursorPosition();
                cursor.setPosition(cell.lastCursorPosition().position(), QTextCursor::KeepAnchor);
                symbols << cursor.selectedText().trimmed();
            }
        }
    }
    for (const QString &symbol :
         {QStringLiteral("\u221a"), QStringLiteral("!"), QStringLiteral("-"), QStringLiteral("."),
          QStringLiteral("..."), QStringLiteral("Err"), QStringLiteral("(blank)")})
        QVERIFY2(symbols.contains(symbol), qPrintable(symbols.join(QLatin1Char(' '))));
    QVERIFY(symbols.indexOf(QRegularExpression(QStringLiteral("^\\d+%$"))) >= 0);

    const QStringList lines = document.toPlainText().split(QLatin1Char('\n'));
    // And each of the six views is introduced by name.
    for (const char *view : {"Sun", "Graphs", "Aurora", "Earth", "Alerts", "Moon"}) {
        const QString start = QLatin1String(view) + QStringLiteral(" \u2013 ");
        QVERIFY2(std::any_of(lines.cbegin(), lines.cend(),
                             [&](const QString &line) { return line.startsWith(start); }),
                 view);
    }
}

void TestShippedDefinitions::artworkForEveryState()
{
    // Every picture a view or the toolbar asks for by name is drawn and renders.
    QStringList names;
    for (int group = 0; group < 4; ++group) {
        const DomainGroup::Placeholders p = DomainGroup::placeholdersForGroup(group);
        names << p.splash << p.noData << p.downloading;
    }
    for (const QString &identifier : ToolbarItems::allowedItemIdentifiers()) {
        if (const auto item = ToolbarItems::item(identifier))
            names << item->image;
    }
    for (const QString &name : names) {
        QVERIFY2(!name.isEmpty() && NamedImage::exists(name), qPrintable(name));
        QVERIFY2(!NamedImage::pixmap(name).isNull(), qPrintable(name));
    }
}

VANTOREL_TEST_MAIN(TestShippedDefinitions)

#include "test_shipped_definitions.moc"
