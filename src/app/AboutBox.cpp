#include "AboutBox.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

AboutBox::AboutBox(QWidget *parent) : QDialog(parent), _aboutBoxVersionNumberField(new QLabel)
{
    setWindowTitle(tr("About Vantorel"));
    setObjectName(QStringLiteral("AboutBox"));

    auto *name = new QLabel(QStringLiteral("<h2>Vantorel</h2>"));
    name->setAlignment(Qt::AlignCenter);
    _aboutBoxVersionNumberField->setAlignment(Qt::AlignCenter);
    _aboutBoxVersionNumberField->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto *blurb = new QLabel(tr("The Sun, the geomagnetic field and the Moon at a glance."));
    blurb->setAlignment(Qt::AlignCenter);
    blurb->setWordWrap(true);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(name);
    layout->addWidget(_aboutBoxVersionNumberField);
    layout->addWidget(blurb);
    layout->addWidget(buttons);
}
