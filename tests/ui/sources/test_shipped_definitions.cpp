#include "../UiFixture.h"

#include "core/shell/ToolbarItems.h"
#include "core/sources/Domain.h"
#include "core/sources/GroupCatalogue.h"
#include "core/util/DescriptionText.h"
#include "ui/common/NamedImage.h"

#include <QFileInfo>
#include <QImageReader>
#include <QRegularExpression>
#include <QTextDocument>

namespace {

// Why a description would show damaged, or nothing: characters that the ASCII step replaces,
// entities that Qt does not know (left in the text as written).
QString htmlProblem(const QString &html)
{
    if (DescriptionText::lossyAscii(html) != html)
        return "characters outside ASCII";
    QTextDocument document;
    document.setHtml(html);
    static const QRegularExpression entity("&([A-Za-z]+|#[0-9]+);");
    const QRegularExpressionMatch left = entity.match(document.toPlainText());
    return left.hasMatch() ? "unknown entity " + left.captured(0) : QString();
}

} // namespace

// The definition files and the artwork that ship with the application, read the way the
// application reads them.
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
        QSet<QString> dataFiles, itemNames, domainNames;
        const auto fresh = [](QSet<QString> &seen, const QString &name) {
            const bool isNew = !seen.contains(name);
            seen << name;
            return isNew;
        };
        const QList<QByteArray> imageFormats = QImageReader::supportedImageFormats();
        for (const GroupCatalogue::Group &group : GroupCatalogue::dataGroups()) {
            const QString file = group.definitionFile;
            const bool flat = group.layout == GroupCatalogue::Layout::Flat;
            FlatGroup alerts;
            DomainGroup images;
            QList<Node *> nodes;
            if (flat) {
                QVERIFY(alerts.loadDictionaryData(file, data));
                nodes = alerts.nodes();
                // "Reload Daily Report" reloads the first; the highlights are reformatted.
                if (group.number == GroupCatalogue::Alerts) {
                    QCOMPARE(nodes.value(0)->fileName(), "RSGA.txt");
                    QVERIFY(alerts.nodeNamed("WKHF.txt"));
                }
            } else {
                QVERIFY(images.loadDomainDataForGroup(group.name, group.number, file, data));
                nodes = images.allNodes();
                const GroupCatalogue::Placeholders &p = group.placeholders;
                for (const QString &name :
                     {p.splash, p.noData, p.downloading}) // placeholders render
                    QVERIFY2(!NamedImage::pixmap(name).isNull(), qPrintable(file + ": " + name));
                for (const Domain *domain : images.domains())
                    QVERIFY2(fresh(domainNames, domain->domainName()), qPrintable(file));
            }
            QVERIFY2(!nodes.isEmpty(), qPrintable(file));
            QSet<QString> titles; // the Alerts menu tells the reports apart by their titles
            for (const Node *node : nodes) {
                const QString where = file + ": " + node->fileName();
                const QByteArray at = where.toUtf8();
                QVERIFY2(fresh(dataFiles, node->fileName().toLower()) &&
                             fresh(itemNames, node->itemName().toLower()) &&
                             fresh(titles, node->nodeTitle()),
                         at);
                QVERIFY2(!node->itemName().trimmed().isEmpty() &&
                             !node->nodeTitle().trimmed().isEmpty(),
                         at);
                QVERIFY2(node->fileType() == (flat ? 1 : 0) && node->URL().endsWith('/'), at);
                for (const QUrl &url : {QUrl(node->sourceURL()), QUrl(node->dataSource())})
                    QVERIFY2(url.isValid() && url.scheme() == "https" && !url.host().isEmpty(), at);
                // Pictures in a format the image views can show; bulletins are text files, the
                // providers' data JSON.
                const QByteArray text = group.number == GroupCatalogue::Now ? "json" : "txt";
                for (const QString &name : {QUrl(node->sourceURL()).path(), node->fileName()}) {
                    const QByteArray suffix = QFileInfo(name).suffix().toLower().toLatin1();
                    QVERIFY2(flat ? suffix == text : imageFormats.contains(suffix), at);
                }
                const QString problem = htmlProblem(node->itemDescription());
                QVERIFY2(problem.isEmpty(), qPrintable(where + ": " + problem));
            }
        }
    }

    void toolbarArtwork()
    {
        for (const QString &identifier : ToolbarItems::allowedItemIdentifiers()) {
            if (const auto item = ToolbarItems::item(identifier))
                QVERIFY2(!NamedImage::pixmap(item->image).isNull(), qPrintable(identifier));
        }
    }
};

VANTOREL_TEST_MAIN(TestShippedDefinitions)
#include "test_shipped_definitions.moc"
