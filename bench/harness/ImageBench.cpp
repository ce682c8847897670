// Image display: the time from selecting a node whose data file is a large JPEG until the scaled
// picture is in the view, against QImageReader decoding the same file at the same size alone.

#include "HarnessApp.h"

#include "core/sources/DomainGroup.h"
#include "core/sources/GroupOutlineModel.h"
#include "core/sources/Node.h"
#include "ui/shell/AppController.h"
#include "ui/sources/GroupView.h"
#include "ui/sources/ImagePane.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QJsonArray>
#include <QJsonObject>
#include <QPainter>
#include <QRadialGradient>
#include <QRandomGenerator>
#include <QTimer>
#include <QTreeView>

#include <cmath>
#include <cstdio>
#include <functional>

namespace {

// A picture with the structure of a full-disc solar image: a dark sky, a limb-darkened disc with
// brighter active regions, and fine grain everywhere, so that the file is as large and as slow to
// decode as a real one of that size.
int makeJpeg(const QString &path, int side)
{
    QImage image(side, side, QImage::Format_RGB32);
    image.fill(Qt::black);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        const QPointF centre(side / 2.0, side / 2.0);
        const double radius = side * 0.42;
        QRadialGradient disc(centre, radius);
        disc.setColorAt(0.0, QColor(255, 214, 120));
        disc.setColorAt(0.8, QColor(235, 150, 50));
        disc.setColorAt(1.0, QColor(150, 60, 10));
        painter.setBrush(disc);
        painter.setPen(Qt::NoPen);
        painter.drawEllipse(centre, radius, radius);
        QRandomGenerator random(4096);
        for (int i = 0; i < 60; ++i) {
            const double angle = random.bounded(2 * M_PI);
            const double distance = std::sqrt(random.generateDouble()) * radius * 0.9;
            const QPointF spot = centre + QPointF(std::cos(angle), std::sin(angle)) * distance;
            const double size = side * (0.005 + random.generateDouble() * 0.03);
            QRadialGradient region(spot, size);
            region.setColorAt(0.0, QColor(255, 255, 230, 220));
            region.setColorAt(1.0, QColor(255, 255, 230, 0));
            painter.setBrush(region);
            painter.drawEllipse(spot, size, size);
        }
    }
    QRandomGenerator grain(193);
    for (int y = 0; y < side; ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < side; ++x) {
            const int noise = int(grain.bounded(25)) - 12;
            const QRgb pixel = line[x];
            line[x] = qRgb(std::clamp(qRed(pixel) + noise, 0, 255),
                           std::clamp(qGreen(pixel) + noise, 0, 255),
                           std::clamp(qBlue(pixel) + noise, 0, 255));
        }
    }
    if (!image.save(path, "JPEG", 90)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        return 1;
    }
    return 0;
}

Node *nodeWithFile(GroupView *view, const QString &fileName)
{
    for (Node *node : view->group()->allNodes()) {
        if (node->fileName() == fileName)
            return node;
    }
    return nullptr;
}

// Notes when the image pane has been painted with the picture and the frame handed to the window
// system: a zero-timer started while the pane paints runs once the whole update, flush included,
// is done.
class PaintWatch : public QObject {
public:
    bool armed = false;
    double paintedAt = -1;
    std::function<bool()> pictureShown;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (armed && event->type() == QEvent::Paint && pictureShown()) {
            armed = false;
            QTimer::singleShot(0, this, [this] { paintedAt = Harness::nowMs(); });
        }
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

int runImageBench(const QStringList &arguments)
{
    if (arguments.value(0) == QLatin1String("make-jpeg")) {
        if (arguments.size() != 3)
            return Harness::usage("make-jpeg PATH SIDE");
        return makeJpeg(arguments.at(1), arguments.at(2).toInt());
    }
    if (arguments.size() != 6)
        return Harness::usage("image DEFINITIONS DATA BIG-FILE OTHER-FILE RUNS");
    const int runs = arguments.at(5).toInt();

    AppController *controller = Harness::startApplication(arguments.at(1), arguments.at(2));
    controller->setGroupView(0);
    GroupView *view = controller->sunView();
    Node *big = nodeWithFile(view, arguments.at(3));
    Node *other = nodeWithFile(view, arguments.at(4));
    if (!big || !other || !big->fileDownloaded() || !other->fileDownloaded()) {
        std::fprintf(stderr, "vantorel-bench-harness: the Sun group lacks the two image nodes\n");
        return 1;
    }
    const QString path = big->filePath();
    const QSize expected(800, 800);
    QTreeView *outline = view->domainsList();
    PaintWatch watch;
    watch.pictureShown = [&] { return view->shownImage().deviceIndependentSize() == expected; };
    view->imageView()->installEventFilter(&watch);

    std::vector<double> inView, painted, decodeAlone;
    bool ok = true;
    const auto selectBig = [&] {
        outline->setCurrentIndex(view->outlineModel()->indexForNode(other));
        Harness::processEventsFor(150);
        watch.armed = true;
        watch.paintedAt = -1;
        const double start = Harness::nowMs();
        outline->setCurrentIndex(view->outlineModel()->indexForNode(big));
        // A picture this large is decoded beside the event loop: it is in the view when the
        // decoded picture has arrived there.
        Harness::runEventLoopUntil(watch.pictureShown, 5000);
        const double shown = Harness::nowMs();
        if (view->selectedNode() != big || view->shownImage().deviceIndependentSize() != expected)
            ok = false;
        Harness::runEventLoopUntil([&] { return watch.paintedAt >= 0; }, 2000);
        inView.push_back(shown - start);
        painted.push_back(watch.paintedAt - start);
    };
    const auto decode = [&] {
        Harness::processEventsFor(150);
        const double start = Harness::nowMs();
        QImageReader reader(path);
        reader.setScaledSize(expected);
        const QImage image = reader.read();
        const double end = Harness::nowMs();
        if (image.size() != expected)
            ok = false;
        decodeAlone.push_back(end - start);
    };

    // One of each as a warm-up, then alternating, each side going first half of the time.
    selectBig();
    decode();
    inView.clear();
    painted.clear();
    decodeAlone.clear();
    for (int i = 0; i < runs; ++i) {
        if (i % 2) {
            selectBig();
            decode();
        } else {
            decode();
            selectBig();
        }
    }

    QJsonObject result;
    result[QStringLiteral("ok")] = ok;
    result[QStringLiteral("file_bytes")] = double(QFileInfo(path).size());
    result[QStringLiteral("source_size")] = QStringLiteral("%1x%2")
                                                .arg(QImageReader(path).size().width())
                                                .arg(QImageReader(path).size().height());
    result[QStringLiteral("in_view_ms")] = Harness::toJsonArray(inView);
    result[QStringLiteral("painted_ms")] = Harness::toJsonArray(painted);
    result[QStringLiteral("decode_alone_ms")] = Harness::toJsonArray(decodeAlone);
    result[QStringLiteral("in_view_median_ms")] = Harness::median(inView);
    result[QStringLiteral("painted_median_ms")] = Harness::median(painted);
    result[QStringLiteral("decode_alone_median_ms")] = Harness::median(decodeAlone);
    Harness::printJson(result);
    Harness::stopApplication(controller);
    return ok ? 0 : 1;
}
