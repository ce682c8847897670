#include "core/settings/Settings.h"

#include <QSettings>

#include <memory>

QSettings &Settings::store()
{
    static std::unique_ptr<QSettings> instance = std::make_unique<QSettings>();
    return *instance;
}

void Settings::sync()
{
    store().sync();
}
