#pragma once

#include <QString>

// Where the application's own files are found. The build tree and an installation share one
// layout (bin/ beside share/vantorel/), so the resource folder is found relative to the
// executable in both. Group definition files may also come from a folder given on the command
// line or from the user's configuration folder, in that order, before the bundled ones; the
// bundled one of the same name stands in for a user's file that cannot be read (NodeGroup).
class ResourceLocator {
public:
    static QString resourceFolder();
    static void setResourceFolder(const QString &path);

    // A folder searched before all others for definition files (the --definitions option).
    static void setDefinitionsFolder(const QString &path);
    static QString definitionsFolder();
    // The user's own folder for definition files.
    static QString userDefinitionsFolder();

    // The user's own definition file of that name: the first entry of that name in the
    // definitions folder and then the user's folder, whatever it is (a damaged file, a folder, a
    // link to nothing), so that a mistake there is reported instead of passed over. Empty when
    // neither folder has one; the bundled file is then the only one.
    static QString userDefinitionFilePath(const QString &fileName);
    // A plain resource: the resource folder joined with the name.
    static QString resourcePath(const QString &fileName);
};
