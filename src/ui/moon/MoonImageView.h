#pragma once

#include <QPixmap>
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
    // The picture as last drawn, for its octant, size and pixel density: the gradients and
    // shading take milliseconds to draw, and the view is repainted far more often than the
    // phase or its size changes.
    QPixmap _drawn;
    int _drawnOctant = -1;
};
