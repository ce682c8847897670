#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

// The About box: the application's name, its version line and links to the project's pages.
// Each link asks the controller to open its address; the controller then closes the box.
class AboutBox : public QDialog {
    Q_OBJECT

public:
    explicit AboutBox(QWidget *parent = nullptr);

    QLabel *versionNumberField() const { return _aboutBoxVersionNumberField; }
    QPushButton *linkButton(int index) const;

signals:
    void authorHomePageRequested();
    void mailRequested();
    void donationRequested();
    void relatedSiteOneRequested();
    void relatedSiteTwoRequested();

protected:
    void showEvent(QShowEvent *event) override;

private:
    QLabel *_aboutBoxVersionNumberField;
    QLabel *_icon = nullptr;
    QList<QPushButton *> _links;
};
