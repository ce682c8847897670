#pragma once

#include "ui/common/ClickableText.h"

// The blue link, as used for a node's data source. A press on it while it shows no text is
// ignored.
class ClickableTextBlue : public ClickableText {
    Q_OBJECT

public:
    explicit ClickableTextBlue(QWidget *parent = nullptr);
};
