#include "ui/common/ClickableTextOrange.h"

ClickableTextOrange::ClickableTextOrange(QWidget *parent)
    : ClickableText(QColor::fromRgbF(0.7f, 0.2f, 0.0f), false, parent)
{
}
