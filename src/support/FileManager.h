#pragma once

#include <QString>

// Shows a file in the user's file manager.
class FileManager {
public:
    // Asks the desktop's file manager, over the session bus, to show the file selected; where no
    // file manager answers there, opens the folder that holds it. Returns false when neither
    // could be asked.
    static bool revealFile(const QString &path);
};
