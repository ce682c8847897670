#pragma once

#include "ui/common/ClickableText.h"

// The orange link. Unlike the blue one it reacts to a press whatever its text.
class ClickableTextOrange : public ClickableText {
    Q_OBJECT

public:
    explicit ClickableTextOrange(QWidget *parent = nullptr);
};
