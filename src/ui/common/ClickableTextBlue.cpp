#include "ui/common/ClickableTextBlue.h"

ClickableTextBlue::ClickableTextBlue(QWidget *parent)
    : ClickableText(QColor::fromRgbF(0.0f, 0.0f, 0.75f), true, parent)
{
}
