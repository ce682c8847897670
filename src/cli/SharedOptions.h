#pragma once

#include <QString>

#include <optional>

class QCommandLineParser;

// The options that the window and the commands that touch groups (fetch, report) accept alike:
// where definition files are read from, where data is kept, and the transfer time-out for this
// run only.
class SharedOptions {
public:
    QString definitionsFolder;
    QString dataFolder;
    std::optional<float> timeoutSeconds;

    static void addTo(QCommandLineParser &parser);
    // The options as given; none, with the reason, when a value cannot be used.
    static std::optional<SharedOptions> read(const QCommandLineParser &parser, QString *error);

    // Makes the definitions folder known to the loader (the data folder and the time-out are
    // applied by whoever owns them).
    void applyDefinitionsFolder() const;
};
