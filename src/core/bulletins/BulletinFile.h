#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// Reading a bulletin's data file. Bulletins come as 8-bit text in the Mac OS Roman character set
// or, now and then, as UTF-16 with a byte-order mark; the mark decides, there is no guessing.
class BulletinFile {
public:
    // UTF-16 in the byte order of the mark when the bytes begin with one (the mark itself is not
    // part of the text), otherwise Mac OS Roman, byte by byte.
    static QString decode(const QByteArray &bytes);
    // The character that a Mac OS Roman byte stands for.
    static QChar macRomanCharacter(unsigned char byte);

    // The decoded text of the file, or none when it cannot be read.
    static std::optional<QString> read(const QString &path);

    // What the report area shows for a data file that exists: its text reformatted by the
    // transformation that the data file name selects, with its line breaks as the report area
    // shows them. None when the file cannot be read or holds no text.
    static std::optional<QString> reportText(const QString &path, const QString &dataFileName);
};
