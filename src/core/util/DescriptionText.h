#pragma once

#include <QString>

// Node descriptions are HTML written in ASCII, with HTML entities for every other character.
class DescriptionText {
public:
    // The text with each character outside ASCII replaced by "?", so that stray bytes in a
    // definition file show as what they are instead of garbling the page.
    static QString lossyAscii(const QString &text);
    // Whether a description is worth showing: more than one character long.
    static bool isShowable(const QString &text) { return text.size() > 1; }
};
