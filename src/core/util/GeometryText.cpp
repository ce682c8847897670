#include "core/util/GeometryText.h"

#include <QRegularExpression>

#include <cmath>
#include <limits>

QString GeometryText::fromSize(const QSize &size)
{
    return QStringLiteral("{%1, %2}").arg(size.width()).arg(size.height());
}

QSize GeometryText::toSize(const QString &text)
{
    const QList<double> n = numbers(text, 2);
    return QSize(clampToInt(n.value(0)), clampToInt(n.value(1)));
}

QSize GeometryText::toViewSize(const QString &text)
{
    return toSize(text).expandedTo(QSize(0, 0)).boundedTo(QSize(16384, 16384));
}

QString GeometryText::fromRect(const QRect &rect)
{
    return QStringLiteral("{{%1, %2}, {%3, %4}}")
        .arg(rect.x())
        .arg(rect.y())
        .arg(rect.width())
        .arg(rect.height());
}

QRect GeometryText::toRect(const QString &text)
{
    const QList<double> n = numbers(text, 4);
    return QRect(clampToInt(n.value(0)), clampToInt(n.value(1)), clampToInt(n.value(2)),
                 clampToInt(n.value(3)));
}

bool GeometryText::isEmptyRect(const QRect &rect)
{
    return rect.width() <= 0 || rect.height() <= 0;
}

QList<double> GeometryText::numbers(const QString &text, int wanted)
{
    static const QRegularExpression number(
        QStringLiteral("[-+]?(?:\\d+\\.?\\d*|\\.\\d+)(?:[eE][-+]?\\d+)?"));
    QList<double> result;
    auto it = number.globalMatch(text);
    while (it.hasNext() && result.size() < wanted)
        result.append(it.next().captured().toDouble());
    return result;
}

int GeometryText::clampToInt(double value)
{
    // Sizes far beyond any screen are as wrong as negative ones; keep them inside what a widget
    // can take so that a damaged setting cannot overflow the layout arithmetic.
    constexpr double limit = 1 << 20;
    if (!std::isfinite(value))
        return 0;
    return int(std::clamp(value, -limit, limit));
}
