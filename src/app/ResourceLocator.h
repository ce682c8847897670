#pragma once

#include <QString>

// Where the application's own files are found. The build tree and an installation share one
// layout (bin/ beside share/vantorel/), so the resource folder is found relative to the
// executable in both. Group definition files may also come from a folder given on the command
// line or from the user's configuration folder, in that order, before the bundled ones.
class ResourceLocator {
public:
    static QString resourceFolder();
    static void setResourceFolder(const QString &path);

    // A folder searched before all others for definition files (the --definitions option).
    static void setDefinitionsFolder(const QString &path);
    static QString definitionsFolder();
    // The user's own folder for definition files.
    static QString userDefinitionsFolder();

    // The first existing file of that name in the definitions folder, the user's folder and the
    // resource folder; the resource folder's path when none exists.
    static QString definitionFilePath(const QString &fileName);
    // A plain resource: the resource folder joined with the name.
    static QString resourcePath(const QString &fileName);
};
