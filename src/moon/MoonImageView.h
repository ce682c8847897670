#pragma once

#include <QString>
#include <QWidget>

// Shows one of the drawn phase pictures by name ("MoonPhase0" to "MoonPhase7"), scaled to the
// space it is given. Any other name leaves it empty.
class MoonImageView : public QWidget {
    Q_OBJECT

public:
    explicit MoonImageView(QWidget *parent = nullptr);

    void setImageName(const QString &name);
    QString imageName() const { return _imageName; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString _imageName;
};
