#include "ui/shell/AboutBox.h"

#include "ui/common/NamedImage.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

AboutBox::AboutBox(QWidget *parent) : QDialog(parent), _aboutBoxVersionNumberField(new QLabel)
{
    setWindowTitle(tr("About Vantorel"));
    setObjectName(QStringLiteral("AboutBox"));

    _icon = new QLabel;
    _icon->setAlignment(Qt::AlignCenter);
    _icon->setMinimumSize(96, 96);
    auto *name = new QLabel(QStringLiteral("<h2>Vantorel</h2>"));
    name->setAlignment(Qt::AlignCenter);
    _aboutBoxVersionNumberField->setAlignment(Qt::AlignCenter);
    _aboutBoxVersionNumberField->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto *blurb = new QLabel(tr("The Sun, the geomagnetic field and the Moon at a glance.\n"
                                "Images and bulletins courtesy of NOAA SWPC, NASA and ESA."));
    blurb->setAlignment(Qt::AlignCenter);
    blurb->setWordWrap(true);

    const struct {
        QString label;
        void (AboutBox::*signal)();
    } links[] = {
        {tr("Home Page"), &AboutBox::authorHomePageRequested},
        {tr("Write to the Author"), &AboutBox::mailRequested},
        {tr("Support Vantorel"), &AboutBox::donationRequested},
        {tr("NOAA Space Weather"), &AboutBox::relatedSiteOneRequested},
        {tr("NASA Solar Dynamics Observatory"), &AboutBox::relatedSiteTwoRequested},
    };
    auto *linkGrid = new QGridLayout;
    int i = 0;
    for (const auto &link : links) {
        auto *button = new QPushButton(link.label);
        button->setFlat(true);
        button->setCursor(Qt::PointingHandCursor);
        connect(button, &QPushButton::clicked, this, link.signal);
        linkGrid->addWidget(button, i / 2, i % 2);
        _links.append(button);
        ++i;
    }

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(_icon);
    layout->addWidget(name);
    layout->addWidget(_aboutBoxVersionNumberField);
    layout->addWidget(blurb);
    layout->addLayout(linkGrid);
    layout->addWidget(buttons);
}

void AboutBox::showEvent(QShowEvent *event)
{
    // The artwork is rendered when the box is first shown, not at every start.
    if (!_icon->pixmap().isNull())
        return QDialog::showEvent(event);
    _icon->setPixmap(NamedImage::icon(QStringLiteral("Vantorel")).pixmap(96, 96));
    QDialog::showEvent(event);
}

QPushButton *AboutBox::linkButton(int index) const
{
    return _links.value(index);
}
