#include "core/net/ContentCheck.h"

#include <QByteArrayView>

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f';
}

// Whether the text at the position starts with the word, ignoring case, and the word ends there:
// white space, the end of a tag or the end of what we have follows it.
bool wordAt(const QByteArray &bytes, qsizetype position, QByteArrayView word)
{
    if (position < 0 || position > bytes.size())
        return false;
    const QByteArrayView rest = QByteArrayView(bytes).sliced(position);
    if (rest.size() < word.size() || rest.first(word.size()).compare(word, Qt::CaseInsensitive))
        return false;
    if (rest.size() == word.size())
        return true;
    const char next = rest.at(word.size());
    return isBlank(next) || next == '>' || next == '/';
}

// The end of a document type declaration that starts at the position: one past its ">", which
// may come after a bracketed internal subset and quoted texts holding ">". -1 when it does not
// end within the bytes.
qsizetype doctypeEnd(const QByteArray &bytes, qsizetype position)
{
    char quote = 0;
    int depth = 0;
    for (qsizetype i = position + 2; i < bytes.size(); ++i) {
        const char c = bytes.at(i);
        if (quote) {
            if (c == quote)
                quote = 0;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '[') {
            ++depth;
        } else if (c == ']') {
            --depth;
        } else if (c == '>' && depth <= 0) {
            return i + 1;
        }
    }
    return -1;
}

// Where the first element of a markup text starts, past a UTF-8 byte order mark, white space, an
// XML declaration or other processing instructions, comments and, when asked, a document type
// declaration. -1 when the bytes hold something else first or end before the element.
qsizetype firstElement(const QByteArray &bytes, bool skipDoctype)
{
    qsizetype i = bytes.startsWith("\xEF\xBB\xBF") ? 3 : 0;
    for (;;) {
        while (i < bytes.size() && isBlank(bytes.at(i)))
            ++i;
        if (i >= bytes.size() || bytes.at(i) != '<')
            return -1;
        qsizetype next = -1;
        if (bytes.mid(i, 2) == "<?") {
            next = bytes.indexOf("?>", i + 2);
            next = next < 0 ? -1 : next + 2;
        } else if (bytes.mid(i, 4) == "<!--") {
            next = bytes.indexOf("-->", i + 4);
            next = next < 0 ? -1 : next + 3;
        } else if (skipDoctype && wordAt(bytes, i, "<!doctype")) {
            next = doctypeEnd(bytes, i);
        } else {
            return i;
        }
        if (next < 0)
            return -1;
        i = next;
    }
}

} // namespace

bool ContentCheck::isExpected(int fileType, const QByteArray &prefix)
{
    return fileType == 0 ? isPicture(prefix) : !beginsWithHtmlDocument(prefix);
}

bool ContentCheck::isPicture(const QByteArray &prefix)
{
    static constexpr QByteArrayView signatures[] = {
        QByteArrayView("\xFF\xD8\xFF", 3),      // JPEG
        QByteArrayView("\x89PNG\r\n\x1A\n", 8), // PNG
        QByteArrayView("GIF87a", 6),            // GIF
        QByteArrayView("GIF89a", 6),            //
        QByteArrayView("II*\0", 4),             // TIFF, little-endian
        QByteArrayView("MM\0*", 4),             // TIFF, big-endian
        QByteArrayView("II+\0", 4),             // BigTIFF
        QByteArrayView("MM\0+", 4),             //
    };
    for (const QByteArrayView signature : signatures) {
        if (prefix.startsWith(signature))
            return true;
    }
    // WebP: a RIFF container of the WEBP form.
    if (prefix.startsWith("RIFF") && prefix.mid(8, 4) == "WEBP")
        return true;
    // SVG: markup whose first element is the svg root.
    const qsizetype root = firstElement(prefix, true);
    return root >= 0 && (wordAt(prefix, root, "<svg") || wordAt(prefix, root, "<svg:svg"));
}

bool ContentCheck::beginsWithHtmlDocument(const QByteArray &prefix)
{
    const qsizetype first = firstElement(prefix, false);
    if (first < 0)
        return false;
    if (wordAt(prefix, first, "<!doctype")) {
        qsizetype i = first + 9;
        while (i < prefix.size() && isBlank(prefix.at(i)))
            ++i;
        return wordAt(prefix, i, "html");
    }
    // Portals and error pages do not always send the whole document: a bare head, body or
    // redirecting meta element is as much a page as one that starts with <html>.
    for (const char *tag : {"<html", "<head", "<body", "<meta", "<title", "<script"}) {
        if (wordAt(prefix, first, tag))
            return true;
    }
    return false;
}
