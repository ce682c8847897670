#include "TestEnvironment.h"

#include "alerts/BulletinFile.h"
#include "alerts/ReportFormatter.h"

#include <QFile>
#include <QtTest>

// Time per transformation of large bulletins, at two sizes ten times apart: the time should grow
// about tenfold, never a hundredfold. Texts made only of what the passes replace are the worst
// case, since every pass then rewrites the whole text.
class BenchAlertsReformat : public QObject {
    Q_OBJECT

private slots:
    void transformations_data();
    void transformations();
    void decoding_data();
    void decoding();

private:
    static QString repeated(const QString &unit, qsizetype size)
    {
        QString text;
        text.reserve(size + unit.size());
        while (text.size() < size)
            text += unit;
        return text;
    }
    static QString bulletin(const char *name)
    {
        QFile file(QStringLiteral(VANTOREL_FIXTURES_DIR "/bulletins/") + QLatin1String(name));
        return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()) : QString();
    }
};

void BenchAlertsReformat::transformations_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("text");
    const qsizetype megabyte = 1024 * 1024;
    for (const qsizetype size : {megabyte, 10 * megabyte}) {
        const QByteArray mb = QByteArray::number(size / megabyte) + " MB";
        QTest::newRow("daily, real " + mb) << "RSGA.txt" << repeated(bulletin("rsga-20251218.txt"), size);
        QTest::newRow("highlights, real " + mb) << "WKHF.txt" << repeated(bulletin("wkhf-20251222.txt"), size);
        QTest::newRow("other, real " + mb) << "x.txt" << repeated(bulletin("other-dsd-20251222.txt"), size);
        QTest::newRow("daily, only headings " + mb) << "RSGA.txt" << repeated(QStringLiteral("\nI."), size);
        QTest::newRow("highlights, only breaks " + mb) << "WKHF.txt" << repeated(QStringLiteral("\n"), size);
        QTest::newRow("other, only comments " + mb) << "x.txt" << repeated(QStringLiteral("\n# "), size);
    }
}

void BenchAlertsReformat::transformations()
{
    QFETCH(QString, fileName);
    QFETCH(QString, text);
    QString result;
    QBENCHMARK {
        result = ReportFormatter::reformat(text, fileName);
    }
    QVERIFY(!result.isEmpty());
}

void BenchAlertsReformat::decoding_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QByteArray roman(10 * 1024 * 1024, '\x96');
    QTest::newRow("Mac OS Roman, 10 MB") << roman;
    QByteArray utf16("\xFF\xFE");
    utf16.append(QByteArray(10 * 1024 * 1024, 'a'));
    QTest::newRow("UTF-16, 10 MB") << utf16;
}

void BenchAlertsReformat::decoding()
{
    QFETCH(QByteArray, bytes);
    QString result;
    QBENCHMARK {
        result = BulletinFile::decode(bytes);
    }
    QVERIFY(!result.isEmpty());
}

VANTOREL_TEST_CORE_MAIN(BenchAlertsReformat)
#include "bench_alerts_reformat.moc"
