#pragma once

#include <QString>

// Shows a file in the user's file manager, and copies a file where the user asked for it.
class FileManager {
public:
    // Asks the desktop's file manager, over the session bus, to show the file selected; where no
    // file manager answers there, opens the folder that holds it. Returns false when neither
    // could be asked.
    static bool revealFile(const QString &path);

    // Copies the file to the destination in one step: a file already there is replaced only
    // when the whole copy is written, so a copy that fails leaves it as it was. A destination
    // that is the source itself is left alone. False, with the reason, when the copy failed.
    static bool copyFile(const QString &source, const QString &destination, QString *error);
};
