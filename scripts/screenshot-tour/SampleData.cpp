#include "SampleData.h"

#include "core/shell/AppCore.h"
#include "core/sources/DomainGroup.h"
#include "core/sources/FlatGroup.h"
#include "core/sources/Node.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QRandomGenerator>

#include <cmath>

namespace {

QImage sunImage(int seed, bool coronagraph)
{
    QImage image(1024, 1024, QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor hues[] = {QColor(230, 160, 40), QColor(200, 90, 200), QColor(240, 90, 30),
                           QColor(80, 200, 220), QColor(220, 220, 120)};
    const QColor hue = hues[seed % 5];
    if (coronagraph) {
        QRadialGradient corona(512, 512, 480);
        corona.setColorAt(0.15, hue.lighter(130));
        corona.setColorAt(0.5, hue.darker(200));
        corona.setColorAt(1.0, Qt::black);
        p.setBrush(corona);
        p.setPen(Qt::NoPen);
        p.drawEllipse(QPointF(512, 512), 480, 480);
        p.setBrush(QColor(20, 20, 20));
        p.drawEllipse(QPointF(512, 512), 120, 120);
        return image;
    }
    QRadialGradient disc(512, 512, 420);
    disc.setColorAt(0.0, hue.lighter(150));
    disc.setColorAt(0.85, hue);
    disc.setColorAt(1.0, hue.darker(250));
    p.setBrush(disc);
    p.setPen(Qt::NoPen);
    p.drawEllipse(QPointF(512, 512), 420, 420);
    QRandomGenerator random(quint32(seed) + 7);
    for (int i = 0; i < 14; ++i) {
        const double angle = random.bounded(360.0) * M_PI / 180.0;
        const double radius = random.bounded(380.0);
        const QPointF at(512 + radius * std::cos(angle), 512 + radius * std::sin(angle));
        p.setBrush(QColor(255, 255, 255, 70 + random.bounded(120)));
        p.drawEllipse(at, 8 + random.bounded(30), 6 + random.bounded(20));
    }
    return image;
}

QImage plotImage(int seed)
{
    QImage image(820, 560, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QColor(200, 200, 200));
    for (int x = 60; x < 800; x += 60)
        p.drawLine(x, 30, x, 520);
    for (int y = 30; y < 520; y += 49)
        p.drawLine(60, y, 800, y);
    p.setPen(QPen(Qt::black, 2));
    p.drawRect(60, 30, 740, 490);
    QRandomGenerator random(quint32(seed) + 11);
    const QColor lines[] = {Qt::red, Qt::blue, QColor(0, 140, 0)};
    for (const QColor &colour : lines) {
        QPainterPath path;
        double y = 150 + random.bounded(250.0);
        path.moveTo(60, y);
        for (int x = 62; x <= 800; x += 4) {
            y = std::clamp(y + random.bounded(13.0) - 6.3, 40.0, 510.0);
            path.lineTo(x, y);
        }
        p.setPen(QPen(colour, 1.6));
        p.drawPath(path);
    }
    return image;
}

QImage auroraImage(int seed)
{
    QImage image(800, 800, QImage::Format_RGB32);
    image.fill(QColor(10, 14, 40));
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setBrush(QColor(30, 60, 110));
    p.setPen(QPen(QColor(90, 120, 160), 2));
    p.drawEllipse(QPointF(400, 400), 330, 330);
    QRadialGradient oval(400, 400 + seed % 3 * 10, 260);
    oval.setColorAt(0.55, Qt::transparent);
    oval.setColorAt(0.75, QColor(60, 255, 120, 200));
    oval.setColorAt(0.9, QColor(255, 80, 60, 160));
    oval.setColorAt(1.0, Qt::transparent);
    p.setBrush(oval);
    p.setPen(Qt::NoPen);
    p.drawEllipse(QPointF(400, 400), 260, 260);
    return image;
}

QImage earthImage(int seed)
{
    QImage image(900, 450, QImage::Format_RGB32);
    image.fill(QColor(20, 50, 110));
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    QRandomGenerator random(quint32(seed) + 3);
    p.setPen(Qt::NoPen);
    for (int i = 0; i < 9; ++i) {
        p.setBrush(QColor(60 + random.bounded(40), 120 + random.bounded(50), 60));
        p.drawEllipse(QPointF(random.bounded(900.0), random.bounded(450.0)),
                      40 + random.bounded(120.0), 30 + random.bounded(80.0));
    }
    QLinearGradient band(0, 0, 0, 450);
    band.setColorAt(0.0, QColor(255, 0, 0, 140));
    band.setColorAt(0.25, QColor(255, 200, 0, 60));
    band.setColorAt(0.5, Qt::transparent);
    p.setBrush(band);
    p.drawRect(image.rect());
    return image;
}

// Gives a sample file the age real data would have: most a few minutes to hours old, now and
// then one left behind for days, as when its provider stopped publishing.
void age(const QString &path, int index)
{
    const qint64 minutes = index % 7 == 3 ? 3 * 24 * 60 + 50 : 3 + (index * 37) % 170;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        file.setFileTime(QDateTime::currentDateTime().addSecs(-minutes * 60),
                         QFileDevice::FileModificationTime);
}

} // namespace

void SampleData::fill(AppCore *core, const QString &bulletinFolder)
{
    int seed = 0;
    const QList<DomainGroup *> groups{core->sunGroup(), core->graphGroup(), core->auroraGroup(),
                                      core->earthGroup()};
    for (int g = 0; g < groups.size(); ++g) {
        for (Node *node : groups[g]->allNodes()) {
            ++seed;
            QImage image;
            switch (g) {
            case 0:
                image = sunImage(seed, node->itemName().contains(QLatin1String("LASCO")));
                break;
            case 1:
                image = plotImage(seed);
                break;
            case 2:
                image = auroraImage(seed);
                break;
            default:
                image = earthImage(seed);
                break;
            }
            // The format follows the file name, so a .gif node gets a file a reader accepts.
            image.save(node->filePath(),
                       node->filePath().endsWith(QLatin1String(".gif")) ? "PNG" : nullptr);
            age(node->filePath(), seed);
        }
    }

    const QDir bulletins(bulletinFolder);
    const QStringList samples = bulletins.entryList({QStringLiteral("*.txt")}, QDir::Files);
    int i = 0;
    for (Node *node : core->alertsGroup()->allNodes()) {
        QString source;
        if (node->fileName() == QLatin1String("RSGA.txt"))
            source = bulletins.filePath(QStringLiteral("rsga-20251225.txt"));
        else if (node->fileName() == QLatin1String("WKHF.txt"))
            source = bulletins.filePath(QStringLiteral("wkhf-20251222.txt"));
        else if (!samples.isEmpty())
            source = bulletins.filePath(samples.at(i++ % samples.size()));
        QFile::remove(node->filePath());
        QFile::copy(source, node->filePath());
        age(node->filePath(), i + 1);
    }
}
