#pragma once

#include <QString>

class AppCore;

// Fills the data folder with plausible pictures and bulletins for every node, so that the views
// can be shown as a user sees them without any download.
class SampleData {
public:
    static void fill(AppCore *core, const QString &bulletinFolder);
};
