#pragma once

#include <QDialog>

class QLabel;

// The About box: the application's name, its version line and links to the project's pages.
class AboutBox : public QDialog {
    Q_OBJECT

public:
    explicit AboutBox(QWidget *parent = nullptr);

    QLabel *versionNumberField() const { return _aboutBoxVersionNumberField; }

private:
    QLabel *_aboutBoxVersionNumberField;
};
