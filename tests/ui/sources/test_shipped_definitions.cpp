#include "TestEnvironment.h"

#include "core/shell/ToolbarItems.h"
#include "core/sources/Domain.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"
#include "core/util/DescriptionText.h"
#include "ui/common/NamedImage.h"

#include <QApplication>
#include <QFileInfo>
#include <QImageReader>
#include <QRegularExpression>
#include <QTextDocument>
#include <QXmlStreamReader>
#include <QtTest>

namespace {

// Why a piece of HTML is unfit to show, or nothing: characters that the ASCII step would damage,
// tags outside the small set we use or not properly nested, links that are not https, bare "<",
// ">" or "&", entities that Qt does not know.
QString htmlProblem(const QString &html)
{
    if (DescriptionText::lossyAscii(html) != html)
        return "characters outside ASCII";
    static const QRegularExpression tag("<(/?)([a-zA-Z0-9]+)((?:\\s[^<>]*)?)>");
    static const QRegularExpression entity("&([A-Za-z]+|#[0-9]+);");
    QStringList open;
    for (auto it = tag.globalMatch(html); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        const QString name = m.captured(2).toLower();
        if (!QStringList{"p", "b", "i", "sup", "sub", "br", "h2", "h3", "ul", "li", "table", "tr",
                         "td", "a"}
                 .contains(name))
            return "tag <" + name + ">";
        if (m.captured(3).contains("href=") && !m.captured(3).contains("href=\"https://"))
            return "a link that is not https: " + m.captured(0);
        if (name != "br" && m.captured(1).isEmpty())
            open << name;
        else if (name != "br" && (open.isEmpty() || open.takeLast() != name))
            return "</" + name + "> closes no open tag";
    }
    if (!open.isEmpty())
        return "<" + open.last() + "> never closed";
    QString text = QString(html).remove(tag);
    if (text.contains('<') || text.contains('>') || text.remove(entity).contains('&'))
        return "a bare <, > or &";
    QTextDocument document;
    document.setHtml(html);
    const QRegularExpressionMatch leftover = entity.match(document.toPlainText());
    return leftover.hasMatch() ? "unknown entity " + leftover.captured(0) : QString();
}

// A key that a dictionary of the XML file holds twice: a copied entry that was not renumbered,
// which the parsed dictionary would hide by keeping only one.
QString duplicateKey(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return "cannot be read";
    QXmlStreamReader reader(&file);
    QList<QSet<QString>> dictionaries;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement() && reader.name() == QLatin1String("dict")) {
            dictionaries.append(QSet<QString>());
        } else if (reader.isEndElement() && reader.name() == QLatin1String("dict")) {
            dictionaries.removeLast();
        } else if (reader.isStartElement() && reader.name() == QLatin1String("key")) {
            const QString key = reader.readElementText();
            if (dictionaries.last().contains(key))
                return "key " + key + " twice in one dictionary";
            dictionaries.last().insert(key);
        }
    }
    return reader.hasError() ? "not XML: " + reader.errorString() : QString();
}

} // namespace

// The definition files, the welcome page and the artwork that ship with the application, read
// the way the application reads them.
class TestShippedDefinitions : public QObject {
    Q_OBJECT

private slots:
    void init() { TestEnvironment::resetState(); }

    void definitionFiles()
    {
        // Every entry loads without a word on the console (a rejected entry, a gap in the
        // numbering), points at secure addresses, and stores its data under a name of its own:
        // the data files share one folder (compared ignoring case, as some file systems do), the
        // item names label the shared log, a domain's name keys its remembered expansion.
        QTest::failOnWarning(QRegularExpression("."));
        const QString data = TestEnvironment::makeFolder("data");
        const QStringList files{"DataSun.plist", "DataGraphs.plist", "DataAurora.plist",
                                "DataEarth.plist", "DataAlerts.plist"};
        std::vector<std::unique_ptr<NodeGroup>> groups;
        QSet<QString> dataFiles, itemNames, domainNames;
        const QList<QByteArray> imageFormats = QImageReader::supportedImageFormats();
        for (int g = 0; g < files.size(); ++g) {
            QVERIFY2(duplicateKey(VANTOREL_TEST_SOURCE_RESOURCE_DIR "/" + files[g]).isEmpty(),
                     qPrintable(files[g]));
            QList<Node *> nodes;
            if (g == 4) {
                auto *alerts = new FlatGroup;
                groups.emplace_back(alerts);
                QVERIFY(alerts->loadDictionaryData(files[g], data));
                nodes = alerts->nodes();
                // "Reload Daily Report" reloads the first; the highlights are reformatted.
                QCOMPARE(nodes.value(0)->fileName(), "RSGA.txt");
                QVERIFY(alerts->nodeNamed("WKHF.txt"));
            } else {
                auto *images = new DomainGroup;
                groups.emplace_back(images);
                QVERIFY(images->loadDomainDataForGroup(files[g].mid(4, files[g].size() - 10), g,
                                                       files[g], data));
                nodes = images->allNodes();
                for (const Domain *domain : images->domains()) {
                    QVERIFY2(!domainNames.contains(domain->domainName()),
                             qPrintable(domain->domainName()));
                    domainNames << domain->domainName();
                }
            }
            QVERIFY2(nodes.size() >= 4, qPrintable(files[g]));
            QSet<QString> titles; // the Alerts menu tells the reports apart by their titles
            for (const Node *node : nodes) {
                const QString where = files[g] + ": " + node->fileName();
                const QByteArray whereText = where.toUtf8();
                const char *at = whereText.constData();
                QVERIFY2(!dataFiles.contains(node->fileName().toLower()), at);
                QVERIFY2(!itemNames.contains(node->itemName().toLower()), at);
                QVERIFY2(!titles.contains(node->nodeTitle()), at);
                dataFiles << node->fileName().toLower();
                itemNames << node->itemName().toLower();
                titles << node->nodeTitle();
                QVERIFY2(!node->itemName().trimmed().isEmpty(), at);
                QVERIFY2(!node->nodeTitle().trimmed().isEmpty(), at);
                QVERIFY2(node->fileType() == (g == 4 ? 1 : 0), at);
                QVERIFY2(node->URL().endsWith('/'), at);
                for (const QUrl &url : {QUrl(node->sourceURL()), QUrl(node->dataSource())})
                    QVERIFY2(url.isValid() && url.scheme() == "https" && !url.host().isEmpty(), at);
                // Pictures in a format the image views can show; bulletins are text files.
                for (const QString &name : {QUrl(node->sourceURL()).path(), node->fileName()}) {
                    const QByteArray suffix = QFileInfo(name).suffix().toLower().toLatin1();
                    QVERIFY2(g == 4 ? suffix == "txt" : imageFormats.contains(suffix), at);
                }
                const QString problem = htmlProblem(node->itemDescription());
                QVERIFY2(problem.isEmpty(), qPrintable(where + ": " + problem));
                QTextDocument description;
                description.setHtml(node->itemDescription());
                const QString text = description.toPlainText();
                const qsizetype words =
                    text.split(QRegularExpression("\\s+"), Qt::SkipEmptyParts).size();
                QVERIFY2(words >= 80 && words <= 200, at);
                QVERIFY2(text.contains("courtesy", Qt::CaseInsensitive), at); // the credit line
            }
        }
    }

    void welcomePage()
    {
        QFile file(VANTOREL_TEST_RESOURCE_DIR "/DefaultDescription.txt");
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString html = QString::fromUtf8(file.readAll());
        QVERIFY2(htmlProblem(html).isEmpty(), qPrintable(htmlProblem(html)));
    }

    void artworkForEveryState()
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
        for (const QString &name : names)
            QVERIFY2(!name.isEmpty() && !NamedImage::pixmap(name).isNull(), qPrintable(name));
    }
};

VANTOREL_TEST_MAIN(TestShippedDefinitions)
#include "test_shipped_definitions.moc"
