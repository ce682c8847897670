#include "core/util/DescriptionText.h"

QString DescriptionText::lossyAscii(const QString &text)
{
    QString result;
    result.reserve(text.size());
    for (auto it = text.cbegin(); it != text.cend(); ++it) {
        const QChar c = *it;
        if (c.unicode() < 0x80) {
            result += c;
            continue;
        }
        // One replacement per character, not per half of a surrogate pair.
        if (c.isHighSurrogate() && it + 1 != text.cend() && (it + 1)->isLowSurrogate())
            ++it;
        result += QLatin1Char('?');
    }
    return result;
}
