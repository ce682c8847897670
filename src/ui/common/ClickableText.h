#pragma once

#include <QColor>
#include <QLabel>

// A read-only label that behaves like a link: the pointer becomes a pointing hand over it, the
// text takes a highlight colour, and a click that is released inside sends clicked(). Where the
// button goes in between does not matter, only where it is released.
class ClickableText : public QLabel {
    Q_OBJECT

public:
    bool beingClicked() const { return _beingClicked; }
    bool beenClicked() const { return _beenClicked; }
    // The field's own highlight, made light enough to read when the window is dark.
    QColor highlightColour() const;
    // The colour at rest: black, unless the window is dark, where black could not be read. Read
    // from the window's palette each time, never from the field's own.
    QColor restingColour() const;
    QColor textColour() const;

signals:
    void clicked();

protected:
    ClickableText(const QColor &highlight, bool ignoresEmptyPress, QWidget *parent);
    void finishInitialization();

    bool event(QEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void setTextColour(const QColor &colour);

    QColor _highlight;
    bool _ignoresEmptyPress;
    bool _beingClicked = false;
    bool _beenClicked = false;
    bool _inside = false;
};
