#pragma once

#include <QRect>
#include <QSize>
#include <QString>

// Text forms of sizes and rectangles as they are kept in the settings: "{width, height}" and
// "{{x, y}, {width, height}}". Parsing is forgiving: numbers are read in order, missing ones count
// as 0 and anything else is ignored, so a damaged value never stops the application.
class GeometryText {
public:
    static QString fromSize(const QSize &size);
    static QSize toSize(const QString &text);
    // A size fit for a view: nothing negative, nothing larger than any screen.
    static QSize toViewSize(const QString &text);
    static QString fromRect(const QRect &rect);
    static QRect toRect(const QString &text);
    // True when the rectangle has no area (zero or negative width or height).
    static bool isEmptyRect(const QRect &rect);

private:
    static QList<double> numbers(const QString &text, int wanted);
    static int clampToInt(double value);
};
