#include "MoonView.h"

#include "support/GeometryText.h"

#include <QSettings>

MoonView::MoonView(QWidget *parent) : QWidget(parent) {}

MoonView::~MoonView() = default;

void MoonView::awakeFromNib()
{
    loadFrameSize();
}

void MoonView::setHemisphere(bool southern)
{
    _shemisphere = southern;
}

void MoonView::loadFrameSize()
{
    const QString size = QSettings().value(QLatin1String(kViewSizeKey)).toString();
    if (!size.isEmpty())
        resize(GeometryText::toSize(size).expandedTo(QSize(0, 0)));
}

void MoonView::saveFrameSize()
{
    QSettings().setValue(QLatin1String(kViewSizeKey), GeometryText::fromSize(size()));
}

void MoonView::cleanup()
{
    saveFrameSize();
}
