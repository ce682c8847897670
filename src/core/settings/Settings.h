#pragma once

class QSettings;

// The application's settings store, one for the whole process. Every read and write goes through
// it: it is kept in memory and written out in batches a short while after a change (see
// SettingsStore), and at once by sync(). Opening a store per access would rewrite the settings
// file for every node that saves its state.
class Settings {
public:
    static QSettings &store();
    // Writes pending changes to disk now. Whatever ends in order calls it last.
    static void sync();
};
