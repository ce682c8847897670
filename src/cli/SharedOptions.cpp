#include "cli/SharedOptions.h"

#include "core/util/ResourceLocator.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

#include <cmath>

void SharedOptions::addTo(QCommandLineParser &parser)
{
    parser.addOption({QStringLiteral("definitions"),
                      QStringLiteral("Read group definition files from <dir> first."),
                      QStringLiteral("dir")});
    parser.addOption({QStringLiteral("data-dir"),
                      QStringLiteral("Keep downloaded data in <dir> instead of the data folder."),
                      QStringLiteral("dir")});
    parser.addOption({QStringLiteral("timeout"),
                      QStringLiteral("Give up a transfer after <seconds> without progress "
                                     "(this run only; 0 or less means the default, 60)."),
                      QStringLiteral("seconds")});
}

std::optional<SharedOptions> SharedOptions::read(const QCommandLineParser &parser, QString *error)
{
    SharedOptions options;
    if (parser.isSet(QStringLiteral("definitions"))) {
        options.definitionsFolder = parser.value(QStringLiteral("definitions"));
        if (!QFileInfo(options.definitionsFolder).isDir()) {
            *error = QStringLiteral("--definitions: \"%1\" is not a folder")
                         .arg(options.definitionsFolder);
            return std::nullopt;
        }
        options.definitionsFolder = QDir(options.definitionsFolder).absolutePath();
    }
    if (parser.isSet(QStringLiteral("data-dir"))) {
        options.dataFolder = parser.value(QStringLiteral("data-dir"));
        if (options.dataFolder.isEmpty()) {
            *error = QStringLiteral("--data-dir: the folder name is empty");
            return std::nullopt;
        }
    }
    if (parser.isSet(QStringLiteral("timeout"))) {
        bool ok = false;
        const float seconds = parser.value(QStringLiteral("timeout")).toFloat(&ok);
        if (!ok || !std::isfinite(seconds)) {
            *error = QStringLiteral("--timeout: \"%1\" is not a number of seconds")
                         .arg(parser.value(QStringLiteral("timeout")));
            return std::nullopt;
        }
        options.timeoutSeconds = seconds;
    }
    return options;
}

void SharedOptions::applyDefinitionsFolder() const
{
    ResourceLocator::setDefinitionsFolder(definitionsFolder);
}
