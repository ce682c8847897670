#pragma once

#include <QByteArray>

#include <cstdlib>

// Points HOME and the XDG folders into a temporary home, so that whatever the code under test
// reads or writes (settings, data) stays there and never reaches the real user's files. Shared by
// the tests and the fuzz targets.
inline void pointHomeAt(const QByteArray &home)
{
    setenv("HOME", home.constData(), 1);
    setenv("XDG_CONFIG_HOME", (home + "/.config").constData(), 1);
    setenv("XDG_DATA_HOME", (home + "/.local/share").constData(), 1);
    setenv("XDG_CACHE_HOME", (home + "/.cache").constData(), 1);
    setenv("XDG_STATE_HOME", (home + "/.local/state").constData(), 1);
}
