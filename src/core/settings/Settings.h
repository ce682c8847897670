#pragma once

class QSettings;

// The application's settings store, one for the whole process. Every read and write goes through
// it: it is kept in memory and written out in batches by Qt as the event loop idles, and at once
// by sync(). Opening a store per access would rewrite the settings file for every node that
// saves its state.
class Settings {
public:
    static QSettings &store();
    // Writes pending changes to disk now.
    static void sync();
};
