#pragma once

#include <QByteArray>

// Whether a downloaded body is the kind of file its item expects, judged from its first bytes. A
// server can answer 200 with something else entirely: a captive portal's login page, an error
// page in place of a picture, a JSON message. Such a body must never replace good data.
//
// Pictures (file type 0) must start with the signature of a format the views can show: JPEG,
// PNG, GIF, WebP, TIFF or SVG. Text reports (any other file type) may hold anything but an HTML
// document. Only the bytes are read; nothing is decoded, so the core needs no image library.
class ContentCheck {
public:
    // How many leading bytes the check looks at. An SVG may open with an XML declaration and a
    // comment or two before its root element, so this leaves room for those.
    static constexpr qsizetype kPrefixSize = 4096;

    // Whether a body that begins with these bytes suits an item of the file type.
    static bool isExpected(int fileType, const QByteArray &prefix);
    static bool isPicture(const QByteArray &prefix);
    static bool beginsWithHtmlDocument(const QByteArray &prefix);
};
